# The game's meshes, made by code (kart, roadside models, sky): a library the
# content generator and the tests share.

set(BV_MODELS_SOURCES
  ${CMAKE_CURRENT_SOURCE_DIR}/datagen/models.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/datagen/models_mesh.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/datagen/models_kart.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/datagen/models_scenery.cpp)
if(TARGET bvwriters)
  add_library(bvmodels STATIC ${BV_MODELS_SOURCES})
  target_include_directories(bvmodels PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(bvmodels PUBLIC bvwriters)
endif()

# The content generator is built from every source in datagen/, ours included,
# and its main program is written elsewhere. Until it is here, the generator
# would have no main(): stand in with one that makes the models alone, and lay
# out the rest of the game directory the way the build does without a generator.
if(TARGET bvmodels AND NOT EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/datagen/main.cpp)
  set(BV_MODELS_STANDIN ${CMAKE_BINARY_DIR}/tools/models_standin_main.cpp)
  file(WRITE ${BV_MODELS_STANDIN} [=[
#include <cstdio>
#include <string>
#include "datagen/models.h"
int main(int argc, char** argv) {
    if (argc < 2) return 2;
    std::string error;
    if (!generateModels(argv[1], &error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    return 0;
}
]=])
  function(bv_models_standin)
    if(TARGET datagen)
      set_property(TARGET datagen PROPERTY SOURCES ${CMAKE_BINARY_DIR}/tools/models_standin_main.cpp)
      target_link_libraries(datagen PRIVATE bvmodels)
      add_custom_command(TARGET gamedir POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E make_directory ${BV_GAME_DIR}/Data/Screenshots
        COMMAND ${CMAKE_COMMAND} -E make_directory ${BV_GAME_DIR}/Data/Highscore
        COMMAND ${CMAKE_COMMAND} -E make_directory ${BV_GAME_DIR}/Data/Ghosts
        COMMAND ${CMAKE_COMMAND} -E copy_if_different ${CMAKE_SOURCE_DIR}/data/config.bvd ${BV_GAME_DIR}/Data/config.bvd)
    endif()
  endfunction()
  cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL bv_models_standin)
endif()

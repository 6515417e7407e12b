# The circuits: the track generator and the track validator, in one library
# that the content generator and the tests link.

add_library(bvtracks STATIC
  ${CMAKE_CURRENT_SOURCE_DIR}/datagen/tracks.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/datagen/trackcheck.cpp)
target_include_directories(bvtracks PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})

# Top views of the circuits, to look at while drawing them:
#   cmake --build build --target trackplot && build/tools/trackplot data OUTDIR
add_executable(trackplot EXCLUDE_FROM_ALL ${CMAKE_CURRENT_SOURCE_DIR}/trackplot/main.cpp)
target_link_libraries(trackplot PRIVATE bvtracks)

# The content generator's sources share a directory with the tracks. Where its
# main program is not there yet, the generator writes the tracks alone, and
# the game directory gets what it would have had without a generator.
if(TARGET datagen AND NOT EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/datagen/main.cpp)
  set(BV_TRACKS_MAIN ${CMAKE_CURRENT_BINARY_DIR}/tracks_main.cpp)
  file(WRITE ${BV_TRACKS_MAIN}.in [=[
#include <cstdio>
#include <string>
#include "datagen/tracks.h"
int main(int argc, char** argv) {
    std::string error;
    if (argc != 3) {
        std::fprintf(stderr, "usage: datagen DATADIR SOURCEDIR\n");
        return 2;
    }
    if (!generateTracks(argv[1], argv[2], &error)) {
        std::fprintf(stderr, "datagen: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
]=])
  configure_file(${BV_TRACKS_MAIN}.in ${BV_TRACKS_MAIN} COPYONLY)
  target_sources(datagen PRIVATE ${BV_TRACKS_MAIN})
  add_custom_command(OUTPUT ${BV_DATA_STAMP} APPEND
    COMMAND ${CMAKE_COMMAND} -E make_directory ${BV_GAME_DIR}/Data/Screenshots
    COMMAND ${CMAKE_COMMAND} -E make_directory ${BV_GAME_DIR}/Data/Highscore
    COMMAND ${CMAKE_COMMAND} -E make_directory ${BV_GAME_DIR}/Data/Ghosts
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${CMAKE_SOURCE_DIR}/data/config.bvd ${BV_GAME_DIR}/Data/config.bvd)
endif()

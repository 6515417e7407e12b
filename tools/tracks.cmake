# Top views of the circuits, to look at while drawing them:
#   cmake --build build --target trackplot && build/tools/trackplot data OUTDIR
add_executable(trackplot EXCLUDE_FROM_ALL ${CMAKE_CURRENT_SOURCE_DIR}/trackplot/main.cpp)
target_link_libraries(trackplot PRIVATE bvcontent)

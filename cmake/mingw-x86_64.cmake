set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TQ_MINGW_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
# Test executables run through our Wine wrapper (private prefix in the build folder).
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/wine-run)

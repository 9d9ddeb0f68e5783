set(CMAKE_SYSTEM_PROCESSOR i686)
set(TQ_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
# 32-bit Wine cannot be installed on our machines: the i686 build is compiled and linked only.

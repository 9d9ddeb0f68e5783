# Shared by the MinGW-w64 toolchain files; TQ_MINGW_TRIPLE is set by the includer.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER   ${TQ_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TQ_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER  ${TQ_MINGW_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${TQ_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# The host loads our DLLs from a plain folder: no MinGW runtime DLLs may be needed.
set(CMAKE_EXE_LINKER_FLAGS_INIT    "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

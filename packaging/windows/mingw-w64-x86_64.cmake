# Cross-compiles for 64-bit Windows with Debian's MinGW-w64 compilers, the variant
# with POSIX threads (std::thread and std::mutex, which Qt needs).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(PANOMAT_MINGW_TRIPLET x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${PANOMAT_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${PANOMAT_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${PANOMAT_MINGW_TRIPLET}-windres)

# Libraries and headers come from the MinGW sysroot and from the folders named in
# CMAKE_PREFIX_PATH (the Windows Qt), never from the build machine; programs that run
# during the build (moc, rcc, uic) come from the build machine.
list(APPEND CMAKE_FIND_ROOT_PATH /usr/${PANOMAT_MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

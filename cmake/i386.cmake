# Builds for the 32-bit x86 debugger host on an x86_64 Debian machine with the
# multilib compilers and the i386 multiarch -dev packages:
#   cmake -S . -B build-i386 -DCMAKE_TOOLCHAIN_FILE=cmake/i386.cmake
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(CMAKE_C_FLAGS_INIT "-m32")
set(CMAKE_CXX_FLAGS_INIT "-m32")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32")

# The multilib compiler reports /usr/lib32 rather than a multiarch folder, so
# name it: find_library and find_package then search /usr/lib/i386-linux-gnu
# (and its cmake/ folder) before the architecture-independent places.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_C_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_CXX_LIBRARY_ARCHITECTURE i386-linux-gnu)
# A 64-bit library from the host folders must never end up in the link.
set(CMAKE_IGNORE_PATH /usr/lib/x86_64-linux-gnu /lib/x86_64-linux-gnu)

# pkg-config reads the i386 .pc files, then the architecture-independent ones.
set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/i386-linux-gnu/pkgconfig:/usr/share/pkgconfig")

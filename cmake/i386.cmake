# 32-bit x86 on an x86-64 machine: the multilib compiler with Debian's i386 libraries.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i386)
set(CMAKE_CXX_FLAGS_INIT "-m32")
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_PREFIX_PATH "/usr/lib/i386-linux-gnu")

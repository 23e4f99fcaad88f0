# The native library and its suite as 32-bit x86 Linux programs (gcc-multilib,
# g++-multilib), so pointer size, long and 32-bit size arithmetic run here.
# Floating point in SSE2 registers, as in the 32-bit Windows build, so every
# build computes the same floats as the 64-bit ones (x87 keeps excess precision).
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
# The 64-bit libraries of the host do not link: GoogleTest is built from
# source, the prism program gets no png command.
set(PRISM_TOOL_PNG OFF CACHE BOOL "" FORCE)

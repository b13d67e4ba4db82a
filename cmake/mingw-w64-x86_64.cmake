# Cross-compiles chartcore for 64-bit Windows with MinGW-w64 (Debian's
# g++-mingw-w64-x86-64-posix). The programs run under Wine for the tests.
#   cmake -S . -B build-win -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake
# scripts/test_windows.sh configures, builds and tests with it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(_triple x86_64-w64-mingw32)
find_program(CMAKE_C_COMPILER NAMES ${_triple}-gcc-posix ${_triple}-gcc REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${_triple}-g++-posix ${_triple}-g++ REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES ${_triple}-windres)

# Header-only packages of the build machine (the tool's command-line parser
# and JSON writer) are the same on every target. They are offered to the
# cross build through a mirror holding only their headers and package files,
# so no Linux system header can reach a Windows compile.
set(_host_mirror ${CMAKE_BINARY_DIR}/host-headers)
foreach(_pkg IN ITEMS CLI11:CLI nlohmann_json:nlohmann)
  string(REPLACE ":" ";" _pkg ${_pkg})
  list(GET _pkg 0 _name)
  list(GET _pkg 1 _include)
  if(EXISTS /usr/share/cmake/${_name} AND EXISTS /usr/include/${_include}
     AND NOT EXISTS ${_host_mirror}/usr/share/cmake/${_name})
    file(COPY /usr/share/cmake/${_name} DESTINATION ${_host_mirror}/usr/share/cmake)
    file(MAKE_DIRECTORY ${_host_mirror}/usr/include)
    file(CREATE_LINK /usr/include/${_include} ${_host_mirror}/usr/include/${_include} SYMBOLIC)
  endif()
endforeach()

set(CMAKE_FIND_ROOT_PATH /usr/${_triple} ${_host_mirror})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Wide-character Windows API throughout, and the Microsoft printf rather than
# MinGW's replacement (the library formats numbers itself; the differential
# test compares it with exactly that runtime). Windows 7 is the oldest target.
add_compile_definitions(UNICODE _UNICODE __USE_MINGW_ANSI_STDIO=0 _WIN32_WINNT=0x0601)
# Self-contained programs: Wine need not find the MinGW runtime DLLs.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++ -static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++ -static")
set(CMAKE_CROSSCOMPILING_EMULATOR wine)

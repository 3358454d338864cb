# MinGW-w64 with posix threads and a static run-time; tests run through Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# What scripts/windows_libraries builds comes first.
get_filename_component(VISTEL_WINDOWS_LIBRARIES ${CMAKE_CURRENT_LIST_DIR}/../build/win64-libraries ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${VISTEL_WINDOWS_LIBRARIES} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(ZLIB_USE_STATIC_LIBS ON)
find_program(WINE64 NAMES wine64 PATHS /usr/lib/wine REQUIRED)
# Without random addresses: see scripts/wine_environment.
set(CMAKE_CROSSCOMPILING_EMULATOR setarch -R ${WINE64})

# The image libraries of the converter (tools/pixconv), the same ones for both systems: packages of
# Debian, or what scripts/windows_libraries builds of them. Defines
#   vistel_image_libraries  a library with all that is to be linked

if(WIN32)
  # Libraries that were built anew are looked for anew.
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${VISTEL_WINDOWS_LIBRARIES}/stamp)
  # Remembered from when it could be an import library, which needs a DLL.
  if(ZLIB_LIBRARY_RELEASE MATCHES "\\.dll\\.a$")
    unset(ZLIB_LIBRARY_RELEASE CACHE)
  endif()
endif()

find_package(ZLIB QUIET)
find_package(PNG QUIET)
find_package(JPEG QUIET)
find_package(TIFF QUIET)
set(CMAKE_MESSAGE_LOG_LEVEL WARNING)  # it tells of Python modules that nobody asked for
find_package(OpenEXR CONFIG QUIET)
unset(CMAKE_MESSAGE_LOG_LEVEL)
find_library(WEBP_LIBRARY webp)
find_path(WEBP_INCLUDE_DIR webp/encode.h)
if(WEBP_LIBRARY AND WEBP_INCLUDE_DIR)
  set(WEBP_FOUND TRUE)
endif()
# A static library does not bring those along that it uses: packings of TIFF.
set(tiff_packings)
if(WIN32)
  find_library(LZMA_LIBRARY lzma)
  find_library(ZSTD_LIBRARY zstd)
  set(tiff_packings ${LZMA_LIBRARY} ${ZSTD_LIBRARY})
  if(NOT LZMA_LIBRARY OR NOT ZSTD_LIBRARY)
    set(TIFF_FOUND FALSE)
  endif()
endif()
foreach(library ZLIB PNG JPEG TIFF OpenEXR WEBP)
  if(NOT ${library}_FOUND)
    message(FATAL_ERROR "The image converter needs ${library}: scripts/install_packages build, and "
                        "for Windows scripts/windows_libraries")
  endif()
endforeach()

# Static ones stand before those that they use.
add_library(vistel_image_libraries INTERFACE)
target_include_directories(vistel_image_libraries SYSTEM INTERFACE ${WEBP_INCLUDE_DIR})
target_link_libraries(vistel_image_libraries INTERFACE
  OpenEXR::OpenEXR TIFF::TIFF ${tiff_packings} PNG::PNG JPEG::JPEG ${WEBP_LIBRARY} ZLIB::ZLIB)

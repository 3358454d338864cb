# The image libraries that this build has, for the converter (tools/pixconv) and for the table of
# image types. Sets
#   VISTEL_IMAGE_FEATURES   what resources/image_types.txt may ask for
#   VISTEL_IMAGE_SOURCES    the converter's source files for them, without folder
#   vistel_image_libraries  a library with all that is to be linked
# Every library may be missing: its types are then not there, or read and written by the headers of
# stb, which are always needed.

add_library(vistel_image_libraries INTERFACE)
set(VISTEL_IMAGE_FEATURES own)
set(VISTEL_IMAGE_SOURCES)

# image_feature(NAME SOURCE LIBRARIES...)
macro(image_feature name source)
  list(APPEND VISTEL_IMAGE_FEATURES ${name})
  list(APPEND VISTEL_IMAGE_SOURCES ${source})
  target_link_libraries(vistel_image_libraries INTERFACE ${ARGN})
endmacro()

# Headers that hold a whole library may come from the machine that builds, also for another one; they
# are copied to a folder where nothing else lies.
set(single_headers ${CMAKE_BINARY_DIR}/single_headers)
function(single_header result name)
  find_file(path_of_${name} ${name} PATHS /usr/include /usr/include/stb NO_CMAKE_FIND_ROOT_PATH)
  if(path_of_${name})
    configure_file(${path_of_${name}} ${single_headers}/${name} COPYONLY)
    set(${result} TRUE PARENT_SCOPE)
  else()
    set(${result} FALSE PARENT_SCOPE)
  endif()
endfunction()

find_package(ZLIB QUIET)
find_package(PNG QUIET)
find_package(JPEG QUIET)
find_package(TIFF QUIET)
set(CMAKE_MESSAGE_LOG_LEVEL WARNING)  # it tells of Python modules that nobody asked for
find_package(OpenEXR CONFIG QUIET)
unset(CMAKE_MESSAGE_LOG_LEVEL)
find_library(WEBP_LIBRARY webp)
find_path(WEBP_INCLUDE_DIR webp/encode.h)
single_header(have_stb_image stb_image.h)
single_header(have_stb_image_write stb_image_write.h)
single_header(have_tinyexr tinyexr.h)

target_include_directories(vistel_image_libraries SYSTEM INTERFACE ${single_headers})
if(NOT have_stb_image OR NOT have_stb_image_write)
  message(FATAL_ERROR "stb_image.h and stb_image_write.h are missing: the image converter needs the "
                      "package libstb-dev")
endif()

if(PNG_FOUND)
  image_feature(png png.cpp PNG::PNG)
elseif(ZLIB_FOUND)
  image_feature(png png_stb.cpp ZLIB::ZLIB)
endif()
if(JPEG_FOUND)
  image_feature(jpeg jpeg.cpp JPEG::JPEG)
else()
  image_feature(jpeg jpeg_stb.cpp)
endif()
if(TIFF_FOUND)
  image_feature(tiff tiff.cpp TIFF::TIFF)
endif()
if(OpenEXR_FOUND)
  image_feature(exr exr.cpp OpenEXR::OpenEXR)
elseif(have_tinyexr AND ZLIB_FOUND)
  image_feature(exr "exr_tiny.cpp;tinyexr_implementation.cpp" ZLIB::ZLIB)
endif()
if(WEBP_LIBRARY AND WEBP_INCLUDE_DIR)
  image_feature(webp webp.cpp ${WEBP_LIBRARY})
  target_include_directories(vistel_image_libraries SYSTEM INTERFACE ${WEBP_INCLUDE_DIR})
endif()
message(STATUS "image types need: ${VISTEL_IMAGE_FEATURES}")

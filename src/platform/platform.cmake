# platform_os       files, processes, environment, settings store, memory: the system's own
# platform_clock    the system's clocks
# platform_desktop  window, surface, menu, dialogs, text: the system's own
# platform_headless the desktop and the clocks as plain memory, for unit tests

function(platform_library name)
  file(GLOB sources CONFIGURE_DEPENDS ${ARGN})
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC vistel_headers)
endfunction()

set(here ${CMAKE_CURRENT_SOURCE_DIR}/platform)
# The portable helpers that both the system's own code and the tests need lie in this folder itself.
platform_library(platform_os ${here}/*.cpp ${here}/${VISTEL_SYSTEM}/os/*.cpp)
platform_library(platform_clock ${here}/${VISTEL_SYSTEM}/clock.cpp)
platform_library(platform_desktop ${here}/${VISTEL_SYSTEM}/desktop/*.cpp ${here}/gl/*.cpp)
platform_library(platform_headless ${here}/headless/*.cpp)

vistel_take_precompiled(platform_os)
vistel_take_precompiled(platform_headless)

# The menu table is shared with the resource script.
target_include_directories(platform_desktop PRIVATE ${CMAKE_SOURCE_DIR})

if(WIN32)
  target_link_libraries(platform_desktop PUBLIC platform_os platform_clock opengl32 glu32 gdi32 user32 comctl32 comdlg32 winmm)
  target_link_libraries(platform_clock PUBLIC winmm)
  target_link_libraries(platform_os PUBLIC shell32 advapi32)
  # Every program takes file names in UTF-8: its manifest says so.
  target_sources(platform_os INTERFACE
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:${CMAKE_SOURCE_DIR}/resources/manifest.rc>)
  target_include_directories(platform_os INTERFACE
    $<$<COMPILE_LANGUAGE:RC>:${CMAKE_SOURCE_DIR}/resources>
    $<$<COMPILE_LANGUAGE:RC>:${CMAKE_CURRENT_BINARY_DIR}/generated/version>)
else()
  find_package(Qt6 REQUIRED COMPONENTS Widgets)
  find_package(OpenGL REQUIRED)
  find_package(X11 REQUIRED)
  target_link_libraries(platform_desktop PRIVATE platform_os platform_clock Qt6::Widgets OpenGL::GL X11::X11
    ${CMAKE_DL_LIBS})
endif()

# What a program has for a desktop and clocks is its property VISTEL_DESKTOP: "headless" for unit
# tests, "none" for console tools (clocks only), unset for the real one. Libraries link
# platform_chosen and get what the program that is linked says.
set(chosen "$<TARGET_PROPERTY:VISTEL_DESKTOP>")
# A library waits for no desktop: where only unit tests are built, the real one is not.
set(a_program $<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>)
add_library(platform_chosen INTERFACE)
target_link_libraries(platform_chosen INTERFACE
  $<LINK_ONLY:$<$<STREQUAL:${chosen},headless>:platform_headless>>
  $<LINK_ONLY:$<$<STREQUAL:${chosen},none>:platform_clock>>
  $<LINK_ONLY:$<$<AND:$<STREQUAL:${chosen},>,${a_program}>:platform_desktop>>)

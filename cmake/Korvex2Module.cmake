# How a module for the front end is built; part of the installed package.

# A module from its sources; `moc` runs on them by itself.
#   korvex2_add_module(NAME SOURCES file... [LIBRARIES target...] [DESTINATION folder])
# `cmake --install` puts it into DESTINATION, by default where the installed front end looks for modules.
function(korvex2_add_module name)
  cmake_parse_arguments(PARSE_ARGV 1 module "" "DESTINATION" "SOURCES;LIBRARIES")
  if(module_UNPARSED_ARGUMENTS OR NOT module_SOURCES)
    message(FATAL_ERROR
            "korvex2_add_module(NAME SOURCES file... [LIBRARIES target...] [DESTINATION folder]): ${name} was given "
            "no sources or what it does not know: ${module_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT module_DESTINATION)
    set(module_DESTINATION "${Korvex2_MODULES_DIR}")
  endif()
  add_library(${name} MODULE ${module_SOURCES})
  # Modules of several authors share a process, so each keeps its names to itself. What is missing is told by the linker
  # here, not by the front end's refusal later.
  set_target_properties(${name} PROPERTIES
    AUTOMOC ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_link_libraries(${name} PRIVATE Korvex2::Interfaces ${module_LIBRARIES})
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    target_link_options(${name} PRIVATE LINKER:--no-undefined)
  endif()
  install(TARGETS ${name} LIBRARY DESTINATION "${module_DESTINATION}")
endfunction()

# How the shipped executables are linked so that they start on systems older than the building one.

# A sanitizer or gcov brings a runtime of the building system into the executable, and with it that system's versions.
if(SANITIZE OR COVERAGE)
  set(LINKED_FOR_OLD_SYSTEMS OFF)
else()
  set(LINKED_FOR_OLD_SYSTEMS ON)
endif()

# use_old_c_library(<executable>): asks for no function of a C library newer than 2.17.
function(use_old_c_library executable)
  if(NOT LINKED_FOR_OLD_SYSTEMS)
    return()
  endif()
  target_sources(${executable} PRIVATE $<TARGET_OBJECTS:old_c_library>)
  # Up to 2.33 dlopen is found in this library alone. Later ones still have it, empty.
  target_link_options(${executable} PRIVATE -Wl,--push-state,--no-as-needed -l:libdl.so.2 -Wl,--pop-state)
endfunction()

# How the shipped executables are linked so that they start on systems older than the building one.

# A sanitizer brings a runtime of the building system into the executable, and with it that system's versions. So does
# gcov, but what is linked for old systems then works all the same, and is counted.
if(SANITIZE)
  set(LINKED_FOR_OLD_SYSTEMS OFF)
else()
  set(LINKED_FOR_OLD_SYSTEMS ON)
endif()

# Makes a target need a library that nothing in it asks for here: up to 2.33 the C library had parts for dynamic
# loading and for threads. Later ones still have them, empty.
function(need_part_of_old_c_library target part)
  target_link_libraries(${target} PRIVATE -Wl,--push-state,--no-as-needed -l:${part} -Wl,--pop-state)
endfunction()

# use_old_c_library(<executable or library>): asks for no function of a C library newer than 2.17.
function(use_old_c_library target)
  if(LINKED_FOR_OLD_SYSTEMS)
    get_target_property(type ${target} TYPE)
    target_sources(${target} PRIVATE
      $<TARGET_OBJECTS:old_c_library> $<$<STREQUAL:${type},EXECUTABLE>:$<TARGET_OBJECTS:old_start>>)
    need_part_of_old_c_library(${target} libdl.so.2)
  endif()
endfunction()

# use_own_cxx_library(<executable>): asks for no C++ library at all and has one of its own. For an executable that must
# start where the server's library is broken, and whose objects no library in the process touches.
function(use_own_cxx_library executable)
  if(LINKED_FOR_OLD_SYSTEMS)
    target_link_options(${executable} PRIVATE -static-libstdc++)
    target_sources(${executable} PRIVATE $<TARGET_OBJECTS:old_thread_library>)
    need_part_of_old_c_library(${executable} libpthread.so.0)
  endif()
endfunction()

# The component "debug": what is stripped from the executables, in the folder where gdb looks for it by build id. That
# folder belongs to the system, not to the prefix, and is therefore filled only when it is asked for by name, as cpack
# does.
find_program(OBJCOPY objcopy)
find_program(READELF readelf)
foreach(executable grellin_loader grellin_doctor)
  install(CODE "
    set(executable \"$<TARGET_FILE:${executable}>\")
    set(readelf \"${READELF}\")
    set(objcopy \"${OBJCOPY}\")
    include(\"${CMAKE_CURRENT_SOURCE_DIR}/install_debug_information.cmake\")"
    COMPONENT debug EXCLUDE_FROM_ALL)
endforeach()

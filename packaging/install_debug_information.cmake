# Writes the debug information of `executable` into the installation that is being made.
execute_process(COMMAND ${readelf} --notes ${executable} OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
if(NOT notes MATCHES "Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)")
  message(FATAL_ERROR "${executable} has no build id")
endif()
set(folder $ENV{DESTDIR}/usr/lib/debug/.build-id/${CMAKE_MATCH_1})
set(file ${folder}/${CMAKE_MATCH_2}.debug)
file(MAKE_DIRECTORY ${folder})
execute_process(COMMAND ${objcopy} --only-keep-debug ${executable} ${file}
  COMMAND_ERROR_IS_FATAL ANY)
file(CHMOD ${file} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

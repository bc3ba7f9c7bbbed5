# Fails and names every *_test.cpp below FOLDER that is not a line of the file TESTED.
file(STRINGS ${TESTED} tested)
file(GLOB_RECURSE found ${FOLDER}/*_test.cpp)
list(REMOVE_ITEM found ${tested})
if(found)
  list(JOIN found "\n  " names)
  message(FATAL_ERROR "These test files belong to no target:\n  ${names}")
endif()

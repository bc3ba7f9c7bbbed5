# add_layer(<target> SOURCES <file>... [USES <target>...])
#
# One static library for one folder. Its headers are found only by the targets that link it: every layer has an include
# folder of its own in the build tree, which holds nothing but a link to the layer's folder. An include of a layer that
# is not named under USES (a higher one, say) therefore does not compile.
function(add_layer target)
  cmake_parse_arguments(LAYER "" "" "SOURCES;USES" ${ARGN})
  add_library(${target} STATIC ${LAYER_SOURCES})
  target_link_libraries(${target} PUBLIC ${LAYER_USES} PRIVATE warnings)

  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  set(include ${PROJECT_BINARY_DIR}/include/${target})
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY ${include}/${parent})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${include}/${folder} SYMBOLIC)
  target_include_directories(${target} PUBLIC ${include})
endfunction()

# add_layer(<target> SOURCES <file>... [USES <target>...])
#
# One static library for one folder. Its headers are found only by the targets that name it: every layer has an include
# folder of its own in the build tree, which holds nothing but a link to the layer's folder, and what a layer uses is not
# passed on to those that use it. An include of a layer that is not named under USES (a higher one, say) therefore does
# not compile.
function(add_layer target)
  cmake_parse_arguments(LAYER "" "" "SOURCES;USES" ${ARGN})
  add_library(${target} STATIC ${LAYER_SOURCES})
  target_link_libraries(${target} PRIVATE ${LAYER_USES} warnings)

  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  set(include ${PROJECT_BINARY_DIR}/include/${target})
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY ${include}/${parent})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${include}/${folder} SYMBOLIC)
  target_include_directories(${target} PUBLIC ${include})
  set_property(GLOBAL APPEND PROPERTY LAYER_INCLUDES ${include})
endfunction()

# The C++ library of old systems, as far as a linker has to know it.

# The path of one of the compiler's own libraries.
function(find_compilers_library name result)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  if(NOT EXISTS "${path}")
    message(FATAL_ERROR "${CMAKE_CXX_COMPILER} has no ${name}")
  endif()
  file(REAL_PATH "${path}" path)
  set(${result} "${path}" PARENT_SCOPE)
endfunction()

# A library that has the name of the C++ library and those of its symbols that old systems have. All are empty: it is for
# linking only.
function(add_stand_in_for_old_cxx_library file)
  find_program(GNU_READELF readelf REQUIRED)  # The compiler's own, when it has one, words its answers differently.
  find_program(AWK awk REQUIRED)
  find_compilers_library(libstdc++.so installed)
  cmake_path(GET file PARENT_PATH folder)
  set(script ${CMAKE_CURRENT_SOURCE_DIR}/old_cxx_library.awk)
  add_custom_command(OUTPUT ${file}
    COMMAND ${GNU_READELF} --dyn-syms --wide ${installed} > installed.txt
    COMMAND ${AWK} -v assembler=symbols.s -v versions=versions.list -f ${script} installed.txt
    COMMAND ${CMAKE_CXX_COMPILER} -shared -nostdlib -Wl,-soname,libstdc++.so.6 -Wl,--version-script=versions.list
      -o ${file} symbols.s
    DEPENDS ${installed} ${script}
    WORKING_DIRECTORY ${folder}
    COMMENT "Making a stand-in for the C++ library of old systems"
    VERBATIM)
endfunction()

# add_old_cxx_library(<target>)
#
# In the folder of <target>, what the compiler links as the C++ library is the stand-in, and then the compiler's archive
# for whatever is newer than that.
function(add_old_cxx_library target)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${target})
  file(MAKE_DIRECTORY ${folder})
  add_stand_in_for_old_cxx_library(${folder}/libstdc++.so.6)
  find_compilers_library(libstdc++.a archive)
  file(CONFIGURE OUTPUT ${folder}/libstdc++.so @ONLY CONTENT "INPUT(\"${folder}/libstdc++.so.6\" \"${archive}\")\n")

  add_custom_target(${target} DEPENDS ${folder}/libstdc++.so.6)
  set_target_properties(${target} PROPERTIES FOLDER_TO_LINK ${folder})
endfunction()

# use_old_cxx_library(<executable or library>): asks for no symbol of a C++ library newer than that of GCC 4.8. What is
# newer comes out of the compiler's archive, for the target alone: it is not exported.
function(use_old_cxx_library target)
  if(NOT LINKED_FOR_OLD_SYSTEMS)
    return()
  endif()
  get_target_property(folder old_cxx_library FOLDER_TO_LINK)
  target_link_options(${target} PRIVATE -L${folder} -Wl,--exclude-libs,libstdc++.a)
  # Named before libdl, although the compiler names it, too: a start looks thousands of symbols up, in one library after
  # the other, and nearly all are the C++ library's. Behind libdl it costs 5 % more instructions to launch.
  target_link_libraries(${target} PRIVATE -lstdc++)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${folder}/libstdc++.so.6 ${folder}/libstdc++.so)
  add_dependencies(${target} old_cxx_library)
endfunction()

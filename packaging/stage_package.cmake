# Run by cpack on what it is about to pack: adds what belongs to an installed package, but not to `cmake --install`.
unset(ENV{DESTDIR})  # It was for `cmake --install`.
set(product ${CPACK_TEMPORARY_DIRECTORY}/product)
set(folder_mode OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(file_mode OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

# The folder of the settings. The settings themselves are no file of the package: they belong to the operator.
file(MAKE_DIRECTORY ${product}/var/opt/morvath/quor/common)

# What a Debian package has to hold besides, for each of the two.
function(add_debian_files package component)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component})
  set(doc ${root}/usr/share/doc/${package})
  file(INSTALL ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION ${doc} FILE_PERMISSIONS ${file_mode})
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # That of SOURCE_DATE_EPOCH, when it is set.
  file(WRITE ${doc}/changelog.Debian
"grellin-loader (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) stable; urgency=medium

  * See /opt/morvath/quor/share/doc/grellin_loader/CHANGELOG.md.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  execute_process(COMMAND gzip --best --no-name ${doc}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
  file(INSTALL ${CMAKE_CURRENT_LIST_DIR}/deb/${package}.lintian-overrides
    DESTINATION ${root}/usr/share/lintian/overrides RENAME ${package} FILE_PERMISSIONS ${file_mode})
endfunction()

# Sets CPACK_DEBIAN_PRODUCT_PACKAGE_DEPENDS to the libraries' packages that the executables ask for. Where the compiler's
# library was packaged before 2020, its package has another name.
function(compute_dependencies)
  set(folder ${CPACK_TEMPORARY_DIRECTORY}.shlibdeps)
  file(WRITE ${folder}/debian/control "Source: grellin-loader\n\nPackage: grellin-loader\nArchitecture: any\n")
  file(GLOB executables ${product}/opt/morvath/quor/bin/*)
  execute_process(COMMAND dpkg-shlibdeps -O ${executables} WORKING_DIRECTORY ${folder}
    OUTPUT_VARIABLE dependencies ERROR_VARIABLE errors RESULT_VARIABLE status)
  if(status)
    message(FATAL_ERROR "dpkg-shlibdeps: ${errors}")
  endif()
  string(REGEX REPLACE "^shlibs:Depends=|\n" "" dependencies "${dependencies}")
  string(REGEX REPLACE "libgcc-s1 \\(>= ([^)]*)\\)" "libgcc-s1 (>= \\1) | libgcc1 (>= 1:\\1)" dependencies "${dependencies}")
  set(CPACK_DEBIAN_PRODUCT_PACKAGE_DEPENDS "${dependencies}" PARENT_SCOPE)
endfunction()

if(CPACK_GENERATOR STREQUAL "DEB")
  compute_dependencies()
  add_debian_files(grellin-loader product)
  add_debian_files(grellin-loader-dbgsym debug)
endif()

file(REMOVE_RECURSE ${CPACK_TEMPORARY_DIRECTORY}/debug/opt)  # The empty prefix.

# Whatever the umask was.
file(GLOB_RECURSE everything LIST_DIRECTORIES true ${CPACK_TEMPORARY_DIRECTORY}/*)
foreach(path IN LISTS everything)
  if(IS_DIRECTORY ${path})
    file(CHMOD ${path} PERMISSIONS ${folder_mode})
  endif()
endforeach()

# One time for all that is packed: what is older than the commit would keep the time at which it was checked out.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(
    COMMAND find ${CPACK_TEMPORARY_DIRECTORY} -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
    COMMAND_ERROR_IS_FATAL ANY)
endif()

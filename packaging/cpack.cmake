# The packages: a Debian package, an RPM and a tar archive, each with one for the debug information beside it.
# scripts/package makes all of them, from the preset "package".
set(CPACK_PACKAGE_NAME grellin-loader)
set(CPACK_PACKAGE_VENDOR "Morvath")
set(CPACK_PACKAGE_CONTACT "Morvath Quor maintainers <quor@morvath.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Native launcher for one managed application, and its doctor")
set(product_description
"grellin_loader finds an installed .NET 6.0 runtime and runs the managed
application of the product in its own process. grellin_doctor explains why a
launch fails.")
set(debug_description
"What gdb needs to name functions, lines and variables of the launcher and the
doctor, in the folder where it looks for them by build id.")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_GENERATOR DEB RPM TGZ)
set(CPACK_COMPONENTS_ALL product debug)
set(CPACK_STRIP_FILES ON)

# The product's folders are fixed, so the files are installed to where they stay, below a folder that stands for /.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /opt/morvath/quor)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/stage_package.cmake)

# --- tar ---
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)

# --- Debian ---
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PRODUCT_PACKAGE_NAME grellin-loader)
set(CPACK_DEBIAN_PRODUCT_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PRODUCT_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_LIST_DIR}/deb/postinst ${CMAKE_CURRENT_LIST_DIR}/deb/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME grellin-loader-dbgsym)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_DEBUG_PACKAGE_DEPENDS "grellin-loader (= ${PROJECT_VERSION}-1)")
set(CPACK_DEBIAN_PRODUCT_DESCRIPTION "${product_description}")
set(CPACK_DEBIAN_DEBUG_DESCRIPTION "${debug_description}")

# --- RPM ---
set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_RELEASE 1)
set(CPACK_RPM_PACKAGE_LICENSE "Proprietary")
set(CPACK_RPM_MAIN_COMPONENT product)
set(CPACK_RPM_PRODUCT_PACKAGE_NAME grellin-loader)
set(CPACK_RPM_DEBUG_PACKAGE_NAME grellin-loader-debuginfo)
set(CPACK_RPM_PRODUCT_PACKAGE_SUMMARY "${CPACK_PACKAGE_DESCRIPTION_SUMMARY}")
set(CPACK_RPM_PRODUCT_PACKAGE_DESCRIPTION "${product_description}")
set(CPACK_RPM_DEBUG_PACKAGE_SUMMARY "Debug information for grellin-loader")
set(CPACK_RPM_DEBUG_PACKAGE_DESCRIPTION "${debug_description}")
set(CPACK_RPM_DEBUG_PACKAGE_AUTOREQ OFF)
set(CPACK_RPM_DEBUG_PACKAGE_REQUIRES "grellin-loader = ${PROJECT_VERSION}")
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION /opt /var /var/opt /usr/lib/debug /usr/lib/debug/.build-id)
# Nothing is done to the files once they are installed, nothing tells where and when the package was made.
set(CPACK_RPM_SPEC_MORE_DEFINE
"%define __os_install_post %{nil}
%define _build_id_links none
%define _buildhost localhost
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1")
set(CPACK_RPM_PRODUCT_POST_INSTALL_SCRIPT_FILE ${CMAKE_CURRENT_LIST_DIR}/rpm/post)

include(CPack)

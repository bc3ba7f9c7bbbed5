# What every translation unit is compiled with, and what the shipped executables are hardened with.
add_library(warnings INTERFACE)
target_compile_options(warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)

# Position-independent code reaches the C++ library's data through the table of offsets. Plain -fPIE would copy that data
# into the executable, and each copy would be one more exported symbol.
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_compile_options(-fPIC -fno-semantic-interposition -fstack-protector-strong -ffunction-sections -fdata-sections)

add_library(hardened INTERFACE)
target_link_options(hardened INTERFACE
  -pie -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,--as-needed -Wl,--gc-sections)

if(SANITIZE)
  add_compile_options(-fsanitize=${SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${SANITIZE})
  # As one library of the process, as g++ links it: by itself, clang++ puts it into the executable, whose symbols the
  # launcher does not export.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND SANITIZE MATCHES "address")
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-runtime-dir
      OUTPUT_VARIABLE runtime_folder OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    add_link_options(-shared-libsan LINKER:-rpath,${runtime_folder})
  endif()
elseif(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()

# For what would be in the way of a check, or of what the tests do with it: compile and link options.
set(NEVER_INSTRUMENTED -fno-sanitize=all)

# Doctor and launcher also end by abort, _exit() and execl(), which keep no counts. What keeps them is an object that every
# executable is linked with, those of the tests as well: it has to be there before the first target is.
if(COVERAGE)
  # Some tests call the product from several threads, which must not lose each other's counts.
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
  # After --coverage, g++ does not heed -fno-profile-arcs.
  list(APPEND NEVER_INSTRUMENTED -fprofile-exclude-files=.*)

  set(keep_counts ${PROJECT_BINARY_DIR}/keep_counts.o)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/keep_counts.cpp)
  execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -std=c++20 -O1 -fPIC -c -o ${keep_counts} ${CMAKE_CURRENT_LIST_DIR}/keep_counts.cpp
    COMMAND_ERROR_IS_FATAL ANY)
  # CMake's own trial programs are linked with it, too, and do not know of add_link_options().
  string(APPEND CMAKE_EXE_LINKER_FLAGS " --coverage -Wl,--wrap=_exit,--wrap=execl ${keep_counts}")
endif()

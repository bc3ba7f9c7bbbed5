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
elseif(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()

if(COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

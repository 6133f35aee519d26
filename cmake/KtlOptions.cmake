# Compiler settings shared by every target of the repository.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
  set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
endif()

find_program(KTL_CCACHE ccache)
if(KTL_CCACHE AND PROJECT_IS_TOP_LEVEL)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${KTL_CCACHE})
endif()

add_library(ktl_options INTERFACE)
target_include_directories(ktl_options INTERFACE ${CMAKE_CURRENT_SOURCE_DIR})
# Map arithmetic is pinned to the last bit: no contraction into fused multiply-add.
target_compile_options(ktl_options INTERFACE -ffp-contract=off)
if(KTL_WERROR)
  target_compile_options(ktl_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
                                               -Werror)
  # Points, extents and the index tree have a virtual operation and, by contract, no virtual destructor; nobody deletes
  # one through a base. clang warns of every array of them.
  target_compile_options(ktl_options INTERFACE $<$<CXX_COMPILER_ID:Clang>:-Wno-delete-non-abstract-non-virtual-dtor>)
endif()
if(KTL_SANITIZE)
  target_compile_options(ktl_options INTERFACE -fsanitize=${KTL_SANITIZE} -fno-omit-frame-pointer
                                               -fno-sanitize-recover=all)
  # g++ takes the sanitizers' own temporaries for uninitialised ones.
  target_compile_options(ktl_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(ktl_options INTERFACE -fsanitize=${KTL_SANITIZE})
elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
  # What packagers expect of a release; CMAKE_CXX_FLAGS and CMAKE_CXX_FLAGS_RELEASE stay theirs.
  target_compile_options(ktl_options INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -D_GLIBCXX_ASSERTIONS
                                               -fstack-protector-strong -fstack-clash-protection -fcf-protection)
  target_link_options(ktl_options INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)
endif()

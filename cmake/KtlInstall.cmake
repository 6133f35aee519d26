# Install rules: library, public headers, CMake package, pkg-config file, and the command with its man page.
# Every header under ktl/ is public but those in ktl/private_headers.txt.
include(CMakePackageConfigHelpers)

file(STRINGS ${PROJECT_SOURCE_DIR}/ktl/private_headers.txt private_headers REGEX "^[^#]")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/ktl/private_headers.txt)
file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/ktl/*.h)
foreach(entry IN LISTS private_headers)
  if(entry MATCHES "/$")
    list(FILTER headers EXCLUDE REGEX "^${entry}")
  else()
    list(REMOVE_ITEM headers ${entry})
  endif()
endforeach()
list(TRANSFORM headers PREPEND ${PROJECT_SOURCE_DIR}/)
target_sources(ktl PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${headers})
set_target_properties(ktl PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)

option(KTL_INSTALL "Make install rules" ${PROJECT_IS_TOP_LEVEL})
if(NOT KTL_INSTALL)
  return()
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ktl)
install(TARGETS ktl EXPORT ktlTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT ktlTargets NAMESPACE ktl:: DESTINATION ${package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/ktlConfig.cmake.in ${PROJECT_BINARY_DIR}/ktlConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ktlConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ktlConfig.cmake ${PROJECT_BINARY_DIR}/ktlConfigVersion.cmake
        DESTINATION ${package_dir})

# The file finds its prefix from where it lies, so that a moved installation still works.
file(RELATIVE_PATH KTL_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" KTL_PC_TO_PREFIX ${KTL_PC_TO_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/ktl.pc.in ${PROJECT_BINARY_DIR}/ktl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ktl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

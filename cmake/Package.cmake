# What other programs get: find_package(kolvex) and the target kolvex::odbaccess, one archive with all that it needs of
# ours. zlib is found again on the machine that uses it.
include(CMakePackageConfigHelpers)

add_library(package_odbaccess STATIC)
set_target_properties(package_odbaccess PROPERTIES
  EXPORT_NAME odbaccess OUTPUT_NAME kolvex_odbaccess LINKER_LANGUAGE CXX)
foreach(part odbaccess odbstore base kernels)
  target_sources(package_odbaccess PRIVATE $<TARGET_OBJECTS:${part}>)
endforeach()
get_target_property(public_headers odbaccess HEADER_SET)
target_sources(package_odbaccess PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${public_headers})
target_compile_features(package_odbaccess PUBLIC cxx_std_20)
target_link_libraries(package_odbaccess INTERFACE
  $<INSTALL_INTERFACE:ZLIB::ZLIB> Threads::Threads ${CMAKE_DL_LIBS})
if(KOLVEX_STATIC_LIBRARIES)
  target_sources(package_odbaccess PRIVATE $<TARGET_OBJECTS:kolvex_fmt>)
else()
  target_link_libraries(package_odbaccess INTERFACE fmt::fmt)
endif()

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/kolvex)
install(TARGETS package_odbaccess EXPORT kolvexTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kolvex COMPONENT development)
install(EXPORT kolvexTargets NAMESPACE kolvex:: DESTINATION ${package} COMPONENT development)
set(KOLVEX_LIBEXEC ${CMAKE_INSTALL_LIBEXECDIR})
configure_package_config_file(cmake/kolvexConfig.cmake.in ${PROJECT_BINARY_DIR}/kolvexConfig.cmake
                              INSTALL_DESTINATION ${package} NO_SET_AND_CHECK_MACRO)
# Until version 1, each minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kolvexConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kolvexConfig.cmake ${PROJECT_BINARY_DIR}/kolvexConfigVersion.cmake
        DESTINATION ${package} COMPONENT development)

# The pages keep their places among each other, so their links hold.
install(FILES ARCHITECTURE.md CHANGELOG.md CONTRIBUTING.md LICENSE README.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation USE_SOURCE_PERMISSIONS
        PATTERN __pycache__ EXCLUDE)

# What `cmake --install` puts where, by component: runtime and scanner (a shared library each), development
# (what compiles and links against them) and tools (in tools/). All of it may be moved afterwards.
include(CMakePackageConfigHelpers)

install(TARGETS tarvolink EXPORT tarvolinkTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
set_target_properties(tarvoscan PROPERTIES INSTALL_RPATH "\$ORIGIN")  # the driver is beside it
install(TARGETS tarvoscan EXPORT tarvolinkTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT scanner NAMELINK_COMPONENT development)

# All but the headers that only the sources include.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/tarvolink
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tarvolink-2.0 COMPONENT development
  FILES_MATCHING PATTERN "*.h"
  PATTERN "cSCIP2Claim.h" EXCLUDE
  PATTERN "cSCIPRecordReader.h" EXCLUDE
  PATTERN "checksum.h" EXCLUDE
  PATTERN "decimal.h" EXCLUDE
  PATTERN "geometry.h" EXCLUDE)

file(GLOB TARVOSCAN_HEADERS ${PROJECT_SOURCE_DIR}/tarvoscan/*.h)
install(FILES ${TARVOSCAN_HEADERS}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tarvolink-2.0/tarvoscan COMPONENT development)

set(TARVO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tarvolink)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tarvolinkConfig.cmake.in
  ${PROJECT_BINARY_DIR}/tarvolinkConfig.cmake INSTALL_DESTINATION ${TARVO_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tarvolinkConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/tarvolinkConfig.cmake
  ${PROJECT_BINARY_DIR}/tarvolinkConfigVersion.cmake
  DESTINATION ${TARVO_CMAKE_DIR} COMPONENT development)
install(EXPORT tarvolinkTargets NAMESPACE tarvolink::
  DESTINATION ${TARVO_CMAKE_DIR} COMPONENT development)

# A folder that was given as an absolute path stays one.
file(RELATIVE_PATH TARVO_PC_TO_PREFIX
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" TARVO_PC_TO_PREFIX "${TARVO_PC_TO_PREFIX}")
set(TARVO_PC_LIBDIR "\${prefix}")
cmake_path(APPEND TARVO_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
set(TARVO_PC_INCLUDEDIR "\${prefix}")
cmake_path(APPEND TARVO_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file(cmake/tarvolink.pc.in ${PROJECT_BINARY_DIR}/tarvolink-2.0.pc @ONLY)
configure_file(cmake/tarvoscan.pc.in ${PROJECT_BINARY_DIR}/tarvoscan-1.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarvolink-2.0.pc ${PROJECT_BINARY_DIR}/tarvoscan-1.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

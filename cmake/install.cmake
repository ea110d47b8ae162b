# cmake --install: the layer libraries, the public headers under include/ny_indicator/ (the
# umbrella ny_indicator.h at its root, the others at the same relative paths as in the source
# tree), nyind with the lexer module beside it and its sample installation, and the package configuration that makes
# find_package(ny_indicator) give the target ny_indicator::ny_indicator.
include(CMakePackageConfigHelpers)
set(NY_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ny_indicator)
set(NY_HEADER_DIR ${CMAKE_INSTALL_INCLUDEDIR}/ny_indicator)

# The public headers are the umbrella and every header it reaches through #include "...": the
# list follows the sources and never names a header that outside code cannot reach.
function(ny_public_headers result)
  set(pending ny_indicator.h)
  set(found)
  while(pending)
    list(POP_FRONT pending header)
    if(header IN_LIST found)
      continue()
    endif()
    list(APPEND found ${header})
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY
      CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${header})
    file(STRINGS ${PROJECT_SOURCE_DIR}/${header} lines REGEX "^#include \"")
    foreach(line ${lines})
      string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" included "${line}")
      list(APPEND pending ${included})
    endforeach()
  endwhile()
  set(${result} ${found} PARENT_SCOPE)
endfunction()

ny_public_headers(headers)
foreach(header ${headers})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${NY_HEADER_DIR}/${folder})
endforeach()

install(TARGETS ${NY_LAYERS} ny_indicator EXPORT ny_indicator_targets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT ny_indicator_targets NAMESPACE ny_indicator:: DESTINATION ${NY_PACKAGE_DIR})
# The editor opens the lexer module from its program's folder, so it goes beside nyind.
install(TARGETS ny_lexical LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR})
if(NY_BUILD_PROGRAMS)
  install(TARGETS nyind RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  # The sample installation nyind opens by default: the sample market and the system formula set
  # (not whatever the build's own runs left in the build tree's copy).
  install(DIRECTORY ${NY_DEFAULT_HOME_DIR}/data DESTINATION ${NY_INSTALLED_HOME_DIR})
  install(FILES ${NY_DEFAULT_HOME_DIR}/config_main.ini DESTINATION ${NY_INSTALLED_HOME_DIR})
  install(FILES ${NY_DEFAULT_HOME_DIR}/defineuser/indi/nysys.dat ${NY_DEFAULT_HOME_DIR}/defineuser/indi/nybase.dat
          DESTINATION ${NY_INSTALLED_HOME_DIR}/defineuser/indi)
endif()

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/ny_indicator-config.cmake.in
  ${PROJECT_BINARY_DIR}/ny_indicator-config.cmake INSTALL_DESTINATION ${NY_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ny_indicator-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ny_indicator-config.cmake
              ${PROJECT_BINARY_DIR}/ny_indicator-config-version.cmake
        DESTINATION ${NY_PACKAGE_DIR})

# What is installed, and where. Components: runtime (shared libraries), camera (the camera library with simulated
# cameras), transport (real cameras), development (headers, CMake packages, pkg-config modules), tool (the command line
# tool and the simulated camera), python. Everything installed may be moved as a whole.
include(CMakePackageConfigHelpers)

set(OX_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake")
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY "${CMAKE_INSTALL_FULL_BINDIR}" OUTPUT_VARIABLE libraryFolder)
set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/${libraryFolder}")

# ox_install_library(target namespace [runtime component]): the library, the headers of its folder `include`, and a CMake
# package of the same name that offers namespace::... packaging/<target>Config.cmake, where there is one, finds what the
# target needs first.
function(ox_install_library target namespace)
  set(component runtime)
  if(ARGN)
    set(component ${ARGN})
  endif()
  set(package "${OX_PACKAGE_DIR}/${target}")
  set(entry "${PROJECT_SOURCE_DIR}/packaging/${target}Config.cmake")
  set(exported ${target}Config.cmake)
  if(EXISTS "${entry}")
    set(exported ${target}Targets.cmake)
    install(FILES "${entry}" DESTINATION "${package}" COMPONENT development)
  endif()
  install(TARGETS ${target} EXPORT ${target}
          LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${component} NAMELINK_COMPONENT development
          INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
  install(EXPORT ${target} NAMESPACE ${namespace}:: FILE ${exported} DESTINATION "${package}" COMPONENT development)
  get_target_property(version ${target} VERSION)
  write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/${target}ConfigVersion.cmake" VERSION ${version}
                                   COMPATIBILITY SameMajorVersion)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${target}ConfigVersion.cmake" DESTINATION "${package}"
          COMPONENT development)
  install(DIRECTORY include/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
endfunction()

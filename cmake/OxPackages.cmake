# The pkg-config modules, and Debian packages made by CPack: liboxgenapi3, liboxcamera1, liboxgenapi-dev, oxgenapi,
# oxgenapi-transport-aravis, python3-oxgenapi.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
           OUTPUT_VARIABLE prefixFromModule)
configure_file(packaging/oxgenapi.pc.in oxgenapi.pc @ONLY)
configure_file(packaging/oxcamera.pc.in oxcamera.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/oxgenapi.pc" "${CMAKE_CURRENT_BINARY_DIR}/oxcamera.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT development)

set(CPACK_PACKAGE_CONTACT "OxGenApi developers <oxgenapi@localhost>")

# What each package has to carry: whose code is in it, and the packaging's own list of changes.
string(TIMESTAMP packaged "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(packaging/changelog.in changelog @ONLY)
execute_process(COMMAND gzip -9nf changelog WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}" COMMAND_ERROR_IS_FATAL ANY)
function(ox_package_documents component package)
  install(FILES packaging/copyright "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz"
          DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}" COMPONENT ${component})
endfunction()
ox_package_documents(runtime liboxgenapi${PROJECT_VERSION_MAJOR})
ox_package_documents(camera liboxcamera1)
ox_package_documents(development liboxgenapi-dev)
ox_package_documents(tool oxgenapi)
ox_package_documents(python python3-oxgenapi)
# The tool with all that it drives, and everything that packages hold; without the tests.
add_custom_target(demonstrated DEPENDS oxgenapi OxCameraUpdate)
add_custom_target(packaged DEPENDS demonstrated OxCamera OxSimulatedCamera)
if(TARGET OxTransportAravis)
  ox_package_documents(transport oxgenapi-transport-aravis)
  add_dependencies(demonstrated OxTransportAravis)
  # Where udev looks for the rules of packages, whatever the prefix.
  install(FILES packaging/70-oxgenapi-usb3-vision.rules DESTINATION lib/udev/rules.d COMPONENT transport)
endif()

if(TARGET site)
  ox_package_documents(documentation liboxgenapi-doc)
  add_dependencies(packaged site)
endif()

set(CPACK_PACKAGE_NAME oxgenapi)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own, the first line of its description
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime camera development tool python)
if(TARGET OxTransportAravis)
  list(APPEND CPACK_COMPONENTS_ALL transport)
endif()
if(TARGET site)
  list(APPEND CPACK_COMPONENTS_ALL documentation)
endif()
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "features of GenICam cameras, shared libraries
A node map is made from a camera's XML description and connected to its
registers; an application then reads and writes features by name, saves
settings, and receives events and chunk data, through flat C functions.")
set(CPACK_COMPONENT_CAMERA_DESCRIPTION "finding, opening and keeping GenICam cameras
Lists the cameras of every transport that is installed, opens one by ID,
address, serial number or name, keeps the connection alive, and opens it
again after a loss. Simulated cameras come with it.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "features of GenICam cameras, development files
Headers for C and C++, CMake packages and pkg-config modules of
libOxGenApi and libOxCamera, and example programs in C, C++ and Python.")
set(CPACK_COMPONENT_TOOL_DESCRIPTION "features of GenICam cameras, command line tool
Reads, writes, watches, saves, compares and documents the features of a
camera or of the simulated one that comes with it, copies files into and
out of cameras, and updates their firmware.")
set(CPACK_COMPONENT_TRANSPORT_DESCRIPTION "GigE Vision and USB3 Vision cameras for oxgenapi
Lets libOxCamera and the command line tool reach cameras on a network or
on USB, through aravis, and users open cameras on USB.")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "features of GenICam cameras, Python package
The features of a camera as Python objects, over the shared library
libOxGenApi.")

set(CPACK_COMPONENT_DOCUMENTATION_DESCRIPTION "features of GenICam cameras, documentation
Guides and the reference of the C, C++ and Python interface and of the
command line tool, as one site with a search.")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME liboxgenapi${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(triggers "${PROJECT_SOURCE_DIR}/packaging/triggers")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${triggers}")
set(CPACK_DEBIAN_CAMERA_PACKAGE_CONTROL_EXTRA "${triggers}")
set(CPACK_DEBIAN_TOOL_PACKAGE_CONTROL_EXTRA "${triggers}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liboxgenapi-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(thisRuntime "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_CAMERA_PACKAGE_NAME liboxcamera1)
set(CPACK_DEBIAN_CAMERA_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_CAMERA_PACKAGE_DEPENDS "${thisRuntime}")
set(CPACK_DEBIAN_CAMERA_PACKAGE_SUGGESTS oxgenapi-transport-aravis)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${thisRuntime}, liboxcamera1 (= ${PROJECT_VERSION}), oxgenapi (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME oxgenapi)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${thisRuntime}, liboxcamera1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS oxgenapi-transport-aravis)
set(CPACK_DEBIAN_TRANSPORT_PACKAGE_NAME oxgenapi-transport-aravis)
set(CPACK_DEBIAN_TRANSPORT_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TRANSPORT_PACKAGE_DEPENDS "liboxcamera1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-oxgenapi)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), liboxgenapi${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "liboxcamera1")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "oxgenapi")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME liboxgenapi-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SHLIBDEPS OFF)
include(CPack)

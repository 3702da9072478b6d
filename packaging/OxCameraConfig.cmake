# find_package(OxCamera 1.0) gives the target OxCamera::OxCamera.
include(CMakeFindDependencyMacro)
find_dependency(OxGenApi 3.1)
include("${CMAKE_CURRENT_LIST_DIR}/OxCameraTargets.cmake")

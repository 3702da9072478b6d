# find_package(OxGenApi 3.1) gives the target OxGenApi::OxGenApi.
include(CMakeFindDependencyMacro)
find_dependency(OxBase 1.0)
find_dependency(OxTelemetry 1.0)
include("${CMAKE_CURRENT_LIST_DIR}/OxGenApiTargets.cmake")

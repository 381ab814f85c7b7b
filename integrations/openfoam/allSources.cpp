// All sources of libzynGradSchemes in one, for wmake: it compiles file by file, and OpenFOAM's headers take most of the
// time. CMake unites them by itself.
#include "../../reference_host/arrays/ArrayHost.cpp"
#include "../../reference_host/arrays/ArrayTopology.cpp"
#include "../../reference_host/mesh/FaceGeometry.cpp"
#include "host/CoupledExchange.cpp"
#include "host/FvGradients.cpp"
#include "host/FvMeshArrays.cpp"
#include "host/FvMeshHost.cpp"
#include "host/GradientMethod.cpp"
#include "host/SettingsFolder.cpp"
#include "schemes/ZynGrad.cpp"

#include "sampling/MeshStamp.h"

namespace Foam {
namespace zyn {

defineTypeNameAndDebug(MeshStamp, 0);

}  // namespace zyn
}  // namespace Foam

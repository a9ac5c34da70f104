#include "devid/model/CProcIdentifier.h"

namespace Mora {
namespace Lux {
namespace Trace {

// Out of line so that the vtable lives in one place.
CProcIdentifier::~CProcIdentifier() = default;

} // namespace Trace
} // namespace Lux
} // namespace Mora

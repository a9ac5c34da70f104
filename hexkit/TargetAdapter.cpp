#include "devid/target/TargetAdapter.h"

namespace Mora {
namespace Lux {
namespace Hexkit {

// The first out-of-line virtual function anchors the vtable and typeinfo in
// libhexkit.so; the reserved slots only hold their places and do nothing.
TargetAdapter::~TargetAdapter() = default;

void TargetAdapter::reserved2() {}
void TargetAdapter::reserved3() {}
void TargetAdapter::reserved4() {}
void TargetAdapter::reserved6() {}
void TargetAdapter::reserved9() {}
void TargetAdapter::reserved10() {}
void TargetAdapter::reserved11() {}
void TargetAdapter::reserved12() {}
void TargetAdapter::reserved13() {}
void TargetAdapter::reserved14() {}
void TargetAdapter::reserved15() {}

} // namespace Hexkit
} // namespace Lux
} // namespace Mora

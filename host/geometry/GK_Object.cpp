#include "host/geometry/GK_Object.h"

// Out of line, so that the vtable lives in the host's core and not in each module.
GK_Object::~GK_Object() = default;

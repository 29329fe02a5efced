#include "host/doc/GK_Layer.h"

// Out of line, so that the vtables live in the host's core and not in each module.
GK_ModelComponent::~GK_ModelComponent() = default;
GK_Layer::~GK_Layer() = default;

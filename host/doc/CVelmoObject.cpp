#include "host/doc/CVelmoObject.h"

// Out of line, so that the vtables live in the host's core: a plug-in makes these objects
// and hands them to the document, which keeps them after the plug-in is unloaded.
CVelmoObject::~CVelmoObject() = default;
CVelmoCurveObject::~CVelmoCurveObject() = default;
CVelmoHatch::~CVelmoHatch() = default;
CVelmoPictureFrameObject::~CVelmoPictureFrameObject() = default;

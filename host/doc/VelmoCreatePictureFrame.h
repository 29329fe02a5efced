#pragma once
// Creating a picture frame in a document.
#include "host/geometry/GK_Plane.h"

class CVelmoDoc;

// Adds a frame of `width` by `height` on `plane` that shows the image file at `path`, on the
// current layer. `embedImage` would copy the file into the document (this host always refers
// to it by path); `selfIlluminated` shows the picture at full brightness in shaded views;
// `asMesh` would make a mesh instead of a surface; `keepAspect` locks the frame's aspect
// when it is edited later. Returns false, adding nothing, for a frame without area or a
// missing path.
bool VelmoCreatePictureFrame(CVelmoDoc& doc, const GK_Plane& plane, const wchar_t* path,
                             bool embedImage, double width, double height, bool selfIlluminated,
                             bool asMesh, bool keepAspect);

#include "host/doc/VelmoCreatePictureFrame.h"

#include "host/doc/CVelmoDoc.h"

bool VelmoCreatePictureFrame(CVelmoDoc& doc, const GK_Plane& plane, const wchar_t* path,
                             bool /*embedImage*/, double width, double height,
                             bool /*selfIlluminated*/, bool /*asMesh*/, bool /*keepAspect*/) {
    if (!path || !*path)
        return false;
    auto* object = new CVelmoPictureFrameObject(GK_PictureFrame(plane, width, height), path);
    CVelmoObjectAttributes attributes;
    attributes.Default();
    attributes.m_layer_index = doc.LayerTable().CurrentLayerIndex();
    object->SetAttributes(attributes);
    return doc.AddObject(object, false, false);
}

#pragma once
// Roots of the host's class tree: every geometry and model component is a GK_Object.

class GK_TextLog; // the host reports validation details to it; unused here

class GK_Object {
public:
    virtual ~GK_Object();
    // Whether the object is usable. The log, when given, would receive the reason.
    virtual bool IsValid(GK_TextLog* log = nullptr) const = 0;
};

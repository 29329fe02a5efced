#include "host/doc/GK_UnitSystem.h"

double GK_UnitSystem::MetersPerUnit(double unsetValue) const {
    switch (m_unit) {
    case VmLengthUnit::Millimeters:
        return 0.001;
    case VmLengthUnit::Centimeters:
        return 0.01;
    case VmLengthUnit::Meters:
        return 1.0;
    case VmLengthUnit::Inches:
        return 0.0254;
    case VmLengthUnit::Feet:
        return 0.3048;
    case VmLengthUnit::Points:
        return 0.0254 / 72.0;
    }
    return unsetValue;
}

#pragma once
// A document's length unit and its size in metres.
#include <cstdint>

// The geometry library's "no value" for doubles: callers pass it to say what a query should
// give back when it has no answer.
constexpr double GK_UNSET_VALUE = -1.23432101234321e+308;

enum class VmLengthUnit : std::int32_t { Millimeters, Centimeters, Meters, Inches, Feet, Points };

class GK_UnitSystem {
public:
    GK_UnitSystem() = default;
    GK_UnitSystem(VmLengthUnit unit) : m_unit(unit) {}

    VmLengthUnit UnitSystem() const { return m_unit; }
    // Metres per unit, or `unsetValue` for a unit that has no length (a value outside the
    // enumeration, as a damaged document could hold).
    double MetersPerUnit(double unsetValue) const;
    bool operator==(const GK_UnitSystem&) const = default;

private:
    VmLengthUnit m_unit = VmLengthUnit::Millimeters;
};

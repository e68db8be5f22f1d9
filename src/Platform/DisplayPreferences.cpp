#include "Platform/DisplayPreferences.h"

namespace ostra {

namespace {

bool preferred(const char *variable, bool ofSystem)
{
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable) != 0
                                               : ofSystem;
}

} // namespace

bool DisplayPreferences::reducedMotion() const
{
    return preferred("OSTRA_REDUCED_MOTION", m_reducedMotion);
}

bool DisplayPreferences::highContrast() const
{
    return preferred("OSTRA_HIGH_CONTRAST", m_highContrast);
}

void DisplayPreferences::set(bool reducedMotion, bool highContrast)
{
    if (m_reducedMotion != reducedMotion || m_highContrast != highContrast) {
        m_reducedMotion = reducedMotion;
        m_highContrast = highContrast;
        emit changed();
    }
}

} // namespace ostra

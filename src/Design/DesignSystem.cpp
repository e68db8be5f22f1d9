#include "Design/DesignSystem.h"

#include "window/motion.h"

#include <windows.h>

// "Show animations in Windows", of the settings for ease of access.
bool wantsLessMotion() {
    BOOL animated = TRUE;
    return SystemParametersInfoW(SPI_GETCLIENTAREAANIMATION, 0, &animated, 0) != FALSE &&
           animated == FALSE;
}

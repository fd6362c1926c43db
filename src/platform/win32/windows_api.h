/// The system's own header, without the macro that would rename a function of the platform layer.
#ifndef DEIMG_PLATFORM_WIN32_WINDOWS_API_H
#define DEIMG_PLATFORM_WIN32_WINDOWS_API_H

#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#undef DeleteFile

#endif  // DEIMG_PLATFORM_WIN32_WINDOWS_API_H

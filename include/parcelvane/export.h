// How the library marks what it exports.
#ifndef PARCELVANE_EXPORT_H
#define PARCELVANE_EXPORT_H

#if defined(_WIN32)
#if defined(PARCELVANE_BUILDING_DLL)
#define PV_API __declspec(dllexport)
#elif defined(PARCELVANE_SHARED)
#define PV_API __declspec(dllimport)
#else
#define PV_API
#endif
#elif defined(__GNUC__)
#define PV_API __attribute__((visibility("default")))
#else
#define PV_API
#endif

#endif  // PARCELVANE_EXPORT_H

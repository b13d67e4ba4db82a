// The library's export macro. Every class and free function that a host may
// use is marked CHARTCORE_API; everything else stays hidden in the shared
// library, as a Windows DLL would keep it.
#ifndef CHARTCORE_PLATFORM_EXPORT_H_
#define CHARTCORE_PLATFORM_EXPORT_H_

#if defined(CHARTCORE_STATIC)
#define CHARTCORE_API
#elif defined(_WIN32)
#if defined(CHARTCORE_BUILDING)
#define CHARTCORE_API __declspec(dllexport)
#else
#define CHARTCORE_API __declspec(dllimport)
#endif
#else
#define CHARTCORE_API __attribute__((visibility("default")))
#endif

#endif  // CHARTCORE_PLATFORM_EXPORT_H_

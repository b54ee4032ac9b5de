// The colour profiler library's C interface, as far as this library calls it.
//
// Handles are opaque; every constructor function returns a new object or null, and the matching
// free function releases it (null is ignored). Status results are 0 for success. Sizes are bytes.
// A size query is a call with a null buffer and size 0: it reports the length through `sizeOut`.
// A buffer that is too small is refused and left as it was. No object is shared between threads
// by these functions; different objects may be used by different threads at the same time.
#pragma once

#include "platform/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Profiles: one ICC profile held in memory. */
VKCL_API void* CLNewCLProfileRef(void);
/* Keeps a copy of the bytes. Refuses what is no ICC profile. */
VKCL_API int CLLoadProfileFromMemory(void* profile, const void* bytes, unsigned int size);
/* `fileSpec` is a file specification; refuses a file that is no ICC profile. */
VKCL_API int CLLoadProfileFromFile(void* profile, void* fileSpec);
VKCL_API void CLFreeCLProfileRef(void* profile);

/* File specifications: a path, given as UTF-8. */
VKCL_API void* CLNewFileSpecRef(void);
VKCL_API int CLName2FileSpec(void* fileSpec, const char* utf8Path);
VKCL_API void CLFreeFileSpecRef(void* fileSpec);

/* 8-bit device links: a conversion from one device space straight into another, an ICC profile of
   class 'link'. A link that was never loaded or built is empty: it serialises to 0 bytes, and
   loading 0 bytes leaves a link empty; both succeed. */
VKCL_API void* CLNewCLLink8Ref(void);
/* Builds the link from two loaded profiles. `renderingIntent`: 0 perceptual, 1 relative
   colorimetric, 2 saturation, 3 absolute colorimetric (ICC.1:2001-04, 6.1.11). A link that cannot
   be built leaves the old content. */
VKCL_API int CLBuildLink8(void* link, void* sourceProfile, void* destinationProfile,
                          int renderingIntent);
/* Keeps a copy of the bytes, which are saved again byte for byte. Refuses what is no ICC profile
   of class 'link'; the old content is then gone and the link empty. */
VKCL_API int CLLoadLink8FromMemory(void* link, const void* bytes, unsigned int size);
VKCL_API int CLSaveLink8ToMemory(void* link, void* buffer, unsigned int size,
                                 unsigned int* sizeOut);
VKCL_API void CLFreeCLLink8Ref(void* link);

#ifdef __cplusplus
}
#endif

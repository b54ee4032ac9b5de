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

/// A new profile: one ICC profile of any class, held in memory. None is loaded yet.
VKCL_API void* CLNewCLProfileRef(void);
/// Keeps a copy of the bytes. Refuses what is no ICC profile, and keeps what it held before.
VKCL_API int CLLoadProfileFromMemory(void* profile, const void* bytes, unsigned int size);
/// Loads the file that a file specification names. Refuses a file that is no ICC profile.
VKCL_API int CLLoadProfileFromFile(void* profile, void* fileSpec);
/// The bytes that were loaded. Refused for a profile that was never loaded.
VKCL_API int CLWriteProfileToMemory(void* profile, void* buffer, unsigned int size,
                                    unsigned int* sizeOut);
/// Releases a profile.
VKCL_API void CLFreeCLProfileRef(void* profile);

/// A new file specification: a path, empty yet.
VKCL_API void* CLNewFileSpecRef(void);
/// Sets the path, given as UTF-8.
VKCL_API int CLName2FileSpec(void* fileSpec, const char* utf8Path);
/// Releases a file specification.
VKCL_API void CLFreeFileSpecRef(void* fileSpec);

///@{
/// A new device link with tables of 8 or of 16 bits: a conversion from one device space straight
/// into another, an ICC profile of class 'link'. A link that was never loaded or built is empty: it
/// serialises to 0 bytes, and loading 0 bytes leaves a link empty; both succeed.
VKCL_API void* CLNewCLLink8Ref(void);
VKCL_API void* CLNewCLLink16Ref(void);
///@}
///@{
/// Builds the link from two loaded profiles. `renderingIntent`: 0 perceptual, 1 relative
/// colorimetric, 2 saturation, 3 absolute colorimetric (ICC.1:2001-04, 6.1.11). A link that cannot
/// be built leaves the old content.
VKCL_API int CLBuildLink8(void* link, void* sourceProfile, void* destinationProfile,
                          int renderingIntent);
VKCL_API int CLBuildLink16(void* link, void* sourceProfile, void* destinationProfile,
                           int renderingIntent);
///@}
///@{
/// Keeps a copy of the bytes, which are saved again byte for byte. Refuses what is no ICC profile
/// of class 'link'; the old content is then gone and the link empty.
VKCL_API int CLLoadLink8FromMemory(void* link, const void* bytes, unsigned int size);
VKCL_API int CLLoadLink16FromMemory(void* link, const void* bytes, unsigned int size);
///@}
///@{
/// Copies the link's bytes, an ICC profile of class 'link', into the buffer.
VKCL_API int CLSaveLink8ToMemory(void* link, void* buffer, unsigned int size,
                                 unsigned int* sizeOut);
VKCL_API int CLSaveLink16ToMemory(void* link, void* buffer, unsigned int size,
                                  unsigned int* sizeOut);
///@}
///@{
/// Releases a link.
VKCL_API void CLFreeCLLink8Ref(void* link);
VKCL_API void CLFreeCLLink16Ref(void* link);
///@}

/// A new set of options: texts by key, with which a profile was computed. They live in the profile
/// file's 'meta' dictionary tag (ICC.1:2010, 9.2.34 and 10.5), under the keys as names, next to
/// whatever else stands there. The keys are ProfileSize, ProfileFormat, BlackGeneration,
/// BlackWidth, BlackStart, BrightenerCorrection and InkTotal; a value has at most 255 bytes of
/// UTF-8.
VKCL_API void* CLNewCLProfilerRef(void);
/// Replaces the options by those of the file. Refuses a file that is no ICC profile, has no
/// dictionary, or none of the keys in it; the options are then as before.
VKCL_API int CLImportProfilerOptions(void* profiler, void* fileSpec);
/// Copies the option's text, zero-terminated, into a buffer of 256 bytes. An option that is not set
/// is refused and leaves the buffer alone.
VKCL_API int CLGetProfilerOption(void* profiler, const char* key, void* buffer);
/// Sets an option to a text. Refuses another key and a longer value.
VKCL_API int CLSetProfilerOption(void* profiler, const char* key, const char* value);
/// Writes the options that are set into the file's dictionary, which is made where there is none.
/// Entries of other names, the header but for its size, and every other tag's bytes stay. Refuses a
/// file with a dictionary that cannot be read, whose entries would be lost. On a refusal the file
/// is as it was.
VKCL_API int CLExportProfilerOptions(void* profiler, void* fileSpec);
/// Releases a set of options.
VKCL_API void CLFreeCLProfilerRef(void* profiler);

#ifdef __cplusplus
}
#endif

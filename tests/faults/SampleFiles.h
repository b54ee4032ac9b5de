// The files that the operations work on, made without the library.
#pragma once

#include "support/TempDir.h"

namespace vkcl::testing {

/// A profile of the system's own with every private tag, a target, the profiler's options and
/// standard tags. Status 12 is that of an unlocked one.
Bytes SampleProfile(unsigned char status = 12);
/// A CMYK output profile without private tags.
Bytes StandardProfile();
/// A profile of class 'link' that Little CMS opens.
Bytes SampleLink();
/// A gray profile from which links can be made.
Bytes GrayProfile();
/// "p.icc", "target.icc" without private tags, and "old.bin", any file.
void LayProfiles(const TempDir& dir);

}  // namespace vkcl::testing

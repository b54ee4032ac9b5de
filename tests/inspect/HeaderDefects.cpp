#include <algorithm>

#include "inspect/CheckedImages.h"

namespace vkcl::testing {

const std::vector<Defect>& HeaderDefects() {
  static const std::vector<Defect> defects = {
      {"nothing", "", [](Bytes&) {}},
      {"empty", "error file.short 6.1", [](Bytes& b) { b.clear(); }},
      {"half a header", "error file.short 6.1", [](Bytes& b) { b.resize(127); }},
      {"no table", "error file.no-table 6.2", [](Bytes& b) { b.resize(131); }},
      {"no magic", "error header.magic 6.1", [](Bytes& b) { b[36] = 'A'; }},
      {"size of the header too large", "error header.size-beyond 6.1.1",
       [](Bytes& b) { SetBig32(b, 0, kCleanEnd + 4); }},
      {"a claim of 4 GB", "error header.size-beyond 6.1.1",
       [](Bytes& b) { SetBig32(b, 0, 0xFFFFFFFC); }},
      {"bytes behind the end", "warning header.size-short 6.1.1",
       [](Bytes& b) { b.insert(b.end(), 4, 0); }},
      {"a size of zero", "warning header.size-short 6.1.1", [](Bytes& b) { SetBig32(b, 0, 0); }},
      {"version 3", "warning header.version 6.1.3", [](Bytes& b) { b[8] = 3; }},
      {"version 2.A", "warning header.version-digits 6.1.3", [](Bytes& b) { b[9] = 0xA0; }},
      {"version 2.4.F", "warning header.version-digits 6.1.3", [](Bytes& b) { b[9] = 0x4F; }},
      {"version 4", "note header.version-4", [](Bytes& b) { b[8] = 4; }},
      {"reserved version bytes", "note header.version-reserved 6.1.3", [](Bytes& b) { b[11] = 1; }},
      {"unknown class", "warning header.class 6.1.4",
       [](Bytes& b) { SetBig32(b, 12, Sig("what")); }},
      {"unknown space", "warning header.color-space 6.1.5",
       [](Bytes& b) {
         b = WithTag(Sig("ncl2"), TypedData(Sig("ncl2"), Bytes(76, 0)),
                     CleanHeader(Sig("nmcl"), Sig("1CLX")));
       }},
      {"an abstract profile of device colours", "warning header.abstract-space 6.3.4.3",
       [](Bytes& b) {
         b = WithTag(Sig("A2B0"), Lut8(3, 3), CleanHeader(Sig("abst"), Sig("RGB ")));
       }},
      {"unknown connection space", "warning header.pcs 6.1.6",
       [](Bytes& b) { SetBig32(b, 20, Sig("RGB ")); }},
      {"no date", "note header.date-unset 6.1",
       [](Bytes& b) { std::fill_n(b.begin() + 24, 12, 0); }},
      {"year 24", "note header.date 6.1", [](Bytes& b) { b[24] = 0, b[25] = 24; }},
      {"month 0", "note header.date 6.1", [](Bytes& b) { b[27] = 0; }},
      {"month 13", "note header.date 6.1", [](Bytes& b) { b[27] = 13; }},
      {"30 February", "note header.date 6.1", [](Bytes& b) { b[29] = 30; }},
      {"29 February 2023", "note header.date 6.1", [](Bytes& b) { b[25] = 0xE7; }},
      {"31 April", "note header.date 6.1", [](Bytes& b) { b[27] = 4, b[29] = 31; }},
      {"hour 24", "note header.date 6.1", [](Bytes& b) { b[31] = 24; }},
      {"minute 60", "note header.date 6.1", [](Bytes& b) { b[33] = 60; }},
      {"second 60", "note header.date 6.1", [](Bytes& b) { b[35] = 60; }},
      {"unknown platform", "note header.platform 6.1.7",
       [](Bytes& b) { SetBig32(b, 40, Sig("what")); }},
      {"no text for a CMM", "note header.unprintable 6.1.2", [](Bytes& b) { SetBig32(b, 4, 7); }},
      {"no text for a maker", "note header.unprintable 6.1",
       [](Bytes& b) { SetBig32(b, 48, 0x41424380); }},
      {"reserved flags", "note header.flags 6.1.8", [](Bytes& b) { b[47] = 4; }},
      {"flags with a meaning, and the maker's", "", [](Bytes& b) { SetBig32(b, 44, 0xFFFF0003); }},
      {"reserved attributes", "note header.attributes 6.1.10", [](Bytes& b) { b[62] = 1; }},
      {"attributes with a meaning, and the maker's", "",
       [](Bytes& b) { SetBig32(b, 56, 0xFFFFFFFF), b[63] = 15; }},
      {"intent 4", "warning header.intent 6.1.11", [](Bytes& b) { b[67] = 4; }},
      {"intent 65536", "warning header.intent 6.1.11", [](Bytes& b) { b[65] = 1; }},
      {"illuminant A", "warning header.illuminant 6.1", [](Bytes& b) { b[70] = 0; }},
      {"the illuminant of this system's own profiles", "",
       [](Bytes& b) { b[71] = 0xD4, b[79] = 0x2B; }},
      {"reserved header bytes", "note header.reserved 6.1", [](Bytes& b) { b[84] = 1; }},
      {"an ID in version 4", "note header.version-4", [](Bytes& b) { b[8] = 4, b[99] = 1; }},
      {"reserved bytes behind the ID", "note header.version-4, note header.reserved 6.1",
       [](Bytes& b) { b[8] = 4, b[100] = 1; }},
  };
  return defects;
}

}  // namespace vkcl::testing

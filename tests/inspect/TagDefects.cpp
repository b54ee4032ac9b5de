#include "inspect/CheckedImages.h"

namespace vkcl::testing {
namespace {

Bytes Version4Header() {
  Bytes header = CleanHeader();
  header[8] = 4;
  return header;
}

// The record is the one that a list of `samples` samples of two colours has, with `values` values.
Bytes ListPayload(unsigned char samples, unsigned char present, std::size_t values) {
  return Join({{'r', 'e', 's', 'u'},
               {samples, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, present, 0, 0, 0},
               Bytes(8 * values, 0)});
}

}  // namespace

// What a class asks for has a test of its own.
const std::vector<Defect>& TagDefects() {
  static const std::vector<Defect> defects = {
      {"no copyright", "warning tags.missing cprt 6.3.2.1",
       [](Bytes& b) {
         const std::vector<ImageTag> tags = CleanTags();
         b = ProfileImage(CleanHeader(), {tags[0], tags[2], tags[3], tags[4]});
       }},
      {"a matrix to Lab", "warning tags.matrix-space 6.3.2.2",
       [](Bytes& b) {
         const std::vector<ImageTag> tags = CleanTags();
         const Bytes color = tags[2].data;
         const Bytes curve = tags[3].data;
         b = ProfileImage(CleanHeader(Sig("mntr"), Sig("RGB "), Sig("Lab ")),
                          {tags[0],
                           tags[1],
                           tags[2],
                           {Sig("rXYZ"), color},
                           {Sig("gXYZ"), color},
                           {Sig("bXYZ"), color},
                           {Sig("rTRC"), curve},
                           {Sig("gTRC"), curve},
                           {Sig("bTRC"), curve}});
       }},
      {"a curve that is a text", "warning tag.type kTRC 6.4.19",
       [](Bytes& b) { b = WithTag(Sig("kTRC"), TextTag("no curve")); }},
      {"a text that is a curve", "warning tag.type cprt 6.4.13",
       [](Bytes& b) { b = WithTag(Sig("cprt"), TypedData(Sig("curv"), Bytes(4, 0))); }},
      {"a type of zeros", "warning tag.type cprt 6.4.13",
       [](Bytes& b) { b = WithTag(Sig("cprt"), Bytes(12, 0)); }},
      {"a table of no known type", "warning tag.type A2B0 6.4.1",
       [](Bytes& b) { b = WithTag(Sig("A2B0"), TypedData(Sig("mft3"), Bytes(60, 0))); }},
      {"a table that runs the other way", "note header.version-4, warning tag.type B2A0 6.4.6",
       [](Bytes& b) {
         b = WithTag(Sig("B2A0"), TypedData(Sig("mAB "), Bytes(24, 0)), Version4Header());
       }},
      {"a type of version 4", "warning tag.type kTRC 6.4.19",
       [](Bytes& b) { b = WithTag(Sig("kTRC"), TypedData(Sig("para"), Bytes(8, 0))); }},
      {"a type of version 4 in version 4", "note header.version-4",
       [](Bytes& b) {
         b = WithTag(Sig("kTRC"), TypedData(Sig("para"), Bytes(8, 0)), Version4Header());
       }},
      {"a private tag that is a text", "warning private.type QX76",
       [](Bytes& b) { b = WithTag(Sig("QX76"), TextTag("no data")); }},
      {"a private tag without a flag", "warning private.type QX76",
       [](Bytes& b) { b = WithTag(Sig("QX76"), TypedData(Sig("data"), {})); }},
      {"a private tag of text", "warning private.flag QX76",
       [](Bytes& b) { b = WithTag(Sig("QX76"), DataTag(Bytes(8, 0), 0)); }},
      {"a private record too long", "warning private.form QX76",
       [](Bytes& b) { b = WithTag(Sig("QX76"), DataTag(Bytes(12, 0))); }},
      {"a private list too short for its head", "warning private.form QX55",
       [](Bytes& b) { b = WithTag(Sig("QX55"), DataTag(Bytes(23, 0))); }},
      {"a private list with all its values", "",
       [](Bytes& b) { b = WithTag(Sig("QX55"), DataTag(ListPayload(3, 1, 6))); }},
      {"a private list short of a value", "warning private.form QX55",
       [](Bytes& b) { b = WithTag(Sig("QX55"), DataTag(ListPayload(3, 1, 5))); }},
      {"a private list without values", "",
       [](Bytes& b) { b = WithTag(Sig("QX55"), DataTag(ListPayload(3, 0, 0))); }},
      {"a private record of another size than it says", "note private.size QX51",
       [](Bytes& b) {
         b = WithTag(Sig("QX51"),
                     DataTag(Join({{1, 0, 0, 0, 139, 0, 0, 0, 16, 0, 0, 0}, Bytes(128, 0)})));
       }},
      {"a private tag of a newer system", "note private.unknown QX77",
       [](Bytes& b) { b = WithTag(Sig("QX77"), DataTag(Bytes(4, 0))); }},
  };
  return defects;
}

}  // namespace vkcl::testing

// The VSD document: what is written into it, read from it, and saved.
#include <algorithm>
#include <cstring>
#include <optional>

#include "faults/Operations.h"

namespace vkcl::testing {
namespace {

using Handler = VSDProfileHandler;

// A document with everything in it.
struct Filled {
  explicit Filled(const TempDir& dir, int existing)
      : to(dir.File("VSDProfile/p.icc")), handler(to, existing) {
    list.NumOfColors = 2;
    list.RefreshList(3);
    list.DataFormat = 0x4C616220;
    list.Measured = 3;
    limits.count = 4;
    spotToWrite.SetData(2, "A spot colour of a long name", starts);
    std::strcpy(param.Make, "A make of more than sixteen letters");
  }
  Filled(const Filled&) = delete;
  Filled& operator=(const Filled&) = delete;

  AFilePath to;
  Handler handler;
  std::optional<Handler> copy;
  double starts[4] = {1, 2, 3, 4};
  double more[4] = {5, 6, 7, 8};
  int count = 4;
  ProfileDataList list;
  ProfileDataList readList;
  VKColorParam param;
  VKSingleInkLimitWithLinRef limits;
  VKSpotSingleInkLimit spotToWrite;
  VKSpotSingleInkLimit spot;
};

int WriteAll(Filled& f, Handler& handler) {
  int written = 0;
  for (int size = 0; size < 3; ++size) {
    written += handler.WriteVSDReferenceData(size, f.list);
    written += handler.WriteVSDMeasurementData(size, f.list);
    written += handler.WriteVSDInvertedData(size, f.list);
  }
  written += handler.WriteVerifyReferenceData(f.list) + handler.WriteVerifyMeasurementData(f.list);
  written += handler.WriteVKColorParam(f.param) + handler.WriteVKSingleInkLimits(f.limits);
  written += handler.WriteVKSpotSIL(f.spotToWrite);
  written += handler.WriteMediumAndLargeStart(f.starts, f.more, 4);
  return written + handler.WriteLargeDotScale(f.starts, 4);
}

std::string Seen(const Filled& f) {
  return ShowArray(f.starts, 4) + ShowArray(f.more, 4) + std::to_string(f.count) + Show(f.list) +
         Show(f.readList) + Show(f.param) + Show(f.limits) + Show(f.spot);
}

template <class Run>
std::function<Attempt(const TempDir&)> On(int existing, Run run) {
  return [=](const TempDir& dir) { return With<Filled>(run, Seen, dir, existing); };
}

// What a write that failed had added stays in the tree.
template <class Run>
Operation Writes(const char* names, Run run) {
  Operation operation = {names, On(0, [=](Filled& f) { return run(f.handler, f); })};
  operation.objectsLeft = ObjectsLeft::Documented;
  return operation;
}

// A read may have stored what stands before the place of its failure.
template <class Run>
Operation Reads(const char* names, Run run) {
  Operation operation = {names, On(1, [=](Filled& f) { return run(f.handler, f); })};
  operation.objectsLeft = ObjectsLeft::Documented;
  return operation;
}

// Every go saves what the document holds then: the operations before it added nothing.
void AddDocuments(std::vector<Operation>& all) {
  all.push_back({"VSDProfileHandler::VSDProfileHandler VSDProfileHandler::IsValid",
                 On(0,
                    [](Filled& f) {
                      f.copy.emplace(f.to, 1);
                      return f.copy->IsValid();
                    }),
                 "loading"});
  all.push_back({"VSDProfileHandler::VSDProfileHandler",
                 On(0,
                    [](Filled& f) {
                      f.copy.emplace(f.to, 0);
                      return f.copy->IsValid();
                    }),
                 "anew"});
  for (const int existing : {0, 1}) {
    Operation save = {"VSDProfileHandler::WriteVKSingleInkLimits VSDProfileHandler::SaveToFile",
                      On(existing,
                         [](Filled& f) {
                           return f.handler.WriteVKSingleInkLimits(f.limits) != 0 &&
                                  f.handler.SaveToFile() != 0;
                         }),
                      existing != 0 ? "saving an old one" : "saving a new one"};
    save.again = false;  // it would add the limits twice
    all.push_back(save);
  }
  all.push_back({"VSDProfileHandler::~VSDProfileHandler", [](const TempDir& dir) {
                   struct Dying {
                     explicit Dying(const TempDir& folder) : to(folder.File("VSDProfile/p.icc")) {}
                     AFilePath to;
                     std::optional<Handler> handler;
                   };
                   return With<Dying>(
                       [](Dying& d) {
                         d.handler.emplace(d.to, 1);
                         const bool valid = d.handler->IsValid() != 0;
                         d.handler.reset();
                         return valid;
                       },
                       [](const Dying&) { return std::string(); }, dir);
                 }});
  all.push_back(
      Reads("VSDProfileHandler::IsComplete", [](Handler& h, Filled&) { return h.IsComplete(); }));
  all.push_back({"VSDProfileHandler::ICCtoVSDFolder",
                 On(0, [](Filled& f) { return !Handler::ICCtoVSDFolder(f.to).str().empty(); })});
}

void AddWrites(std::vector<Operation>& all) {
  using H = Handler;
  using F = Filled;
  all.push_back(Writes("VSDProfileHandler::WriteVKColorParam",
                       [](H& h, F& f) { return h.WriteVKColorParam(f.param); }));
  all.push_back(Writes("VSDProfileHandler::WriteVSDReferenceData",
                       [](H& h, F& f) { return h.WriteVSDReferenceData(1, f.list); }));
  all.push_back(Writes("VSDProfileHandler::WriteVSDMeasurementData",
                       [](H& h, F& f) { return h.WriteVSDMeasurementData(1, f.list); }));
  all.push_back(Writes("VSDProfileHandler::WriteVSDInvertedData",
                       [](H& h, F& f) { return h.WriteVSDInvertedData(1, f.list); }));
  all.push_back(Writes("VSDProfileHandler::WriteVerifyReferenceData",
                       [](H& h, F& f) { return h.WriteVerifyReferenceData(f.list); }));
  all.push_back(Writes("VSDProfileHandler::WriteVerifyMeasurementData",
                       [](H& h, F& f) { return h.WriteVerifyMeasurementData(f.list); }));
  all.push_back(Writes("VSDProfileHandler::WriteMediumAndLargeStart",
                       [](H& h, F& f) { return h.WriteMediumAndLargeStart(f.starts, f.more, 4); }));
  all.push_back(Writes("VSDProfileHandler::WriteLargeDotScale",
                       [](H& h, F& f) { return h.WriteLargeDotScale(f.starts, 4); }));
  all.push_back(Writes("VSDProfileHandler::WriteVKSpotSIL",
                       [](H& h, F& f) { return h.WriteVKSpotSIL(f.spotToWrite); }));
}

void AddReads(std::vector<Operation>& all) {
  using H = Handler;
  using F = Filled;
  all.push_back(Reads("VSDProfileHandler::ReadVKColorParam",
                      [](H& h, F& f) { return h.ReadVKColorParam(f.param); }));
  all.push_back(Reads("VSDProfileHandler::ReadVSDReferenceData",
                      [](H& h, F& f) { return h.ReadVSDReferenceData(1, f.readList); }));
  all.push_back(Reads("VSDProfileHandler::ReadVSDMeasurementData",
                      [](H& h, F& f) { return h.ReadVSDMeasurementData(1, f.readList); }));
  all.push_back(Reads("VSDProfileHandler::ReadVSDInvertedData",
                      [](H& h, F& f) { return h.ReadVSDInvertedData(1, f.readList); }));
  all.push_back(Reads("VSDProfileHandler::ReadVerifyReferenceData",
                      [](H& h, F& f) { return h.ReadVerifyReferenceData(f.readList); }));
  all.push_back(Reads("VSDProfileHandler::ReadVerifyMeasurementData",
                      [](H& h, F& f) { return h.ReadVerifyMeasurementData(f.readList); }));
  all.push_back(Reads("VSDProfileHandler::ReadMediumAndLargeStart", [](H& h, F& f) {
    return h.ReadMediumAndLargeStart(f.starts, f.more, f.count);
  }));
  all.push_back(Reads("VSDProfileHandler::ReadMediumAndLargeStart", [](H& h, F& f) {
    return h.ReadMediumAndLargeStart(f.starts, f.more, 3, f.count);
  }));
  all.push_back(Reads("VSDProfileHandler::ReadLargeDotScale",
                      [](H& h, F& f) { return h.ReadLargeDotScale(f.starts, f.count); }));
  all.push_back(Reads("VSDProfileHandler::ReadLargeDotScale",
                      [](H& h, F& f) { return h.ReadLargeDotScale(f.starts, 3, f.count); }));
  all.push_back(Reads("VSDProfileHandler::ReadVKSingleInkLimits",
                      [](H& h, F& f) { return h.ReadVKSingleInkLimits(f.limits); }));
  // The record's arrays are its owner's, and are not released by a read.
  all.push_back(Reads("VSDProfileHandler::ReadVKSpotSIL", [](H& h, F& f) {
    delete[] f.spot.name;
    delete[] f.spot.limits;
    f.spot.name = nullptr;
    f.spot.limits = nullptr;
    f.spot.count = 0;
    return h.ReadVKSpotSIL(f.spot);
  }));
}

void Lay(const TempDir& dir) {
  std::filesystem::create_directory(dir.path() / "VSDProfile");
  static const Bytes document = [&] {
    Filled filled(dir, 0);
    EXPECT_EQ(WriteAll(filled, filled.handler), 9 + 2 + 3 + 2);
    EXPECT_EQ(filled.handler.SaveToFile(), 1);
    return ReadFile(filled.to.str());
  }();
  WriteFile(dir.path() / "VSDProfile" / "p.icc", document);
}

}  // namespace

Group SidecarOperations() {
  Group group = {Lay, {}};
  AddDocuments(group.operations);
  AddWrites(group.operations);
  AddReads(group.operations);
  return group;
}

}  // namespace vkcl::testing

#include "platform/profiler/ContextMemory.h"

#include <lcms2_plugin.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

#include "platform/Shortage.h"

namespace vkcl::profiler {
namespace {

// What stands before each piece of memory: its neighbours in the ring of its context.
struct alignas(std::max_align_t) PieceHead {
  PieceHead* before = this;
  PieceHead* behind = this;
};

// Little CMS itself takes no more at once.
constexpr cmsUInt32Number kMost = cmsUInt32Number{512} << 20;

void Join(PieceHead* ring, PieceHead* piece) {
  piece->before = ring;
  piece->behind = ring->behind;
  ring->behind->before = piece;
  ring->behind = piece;
}

void Part(PieceHead* piece) {
  piece->before->behind = piece->behind;
  piece->behind->before = piece->before;
  piece->before = piece->behind = piece;
}

// Null while a context is being made or deleted: it looks after those pieces itself.
PieceHead* RingOf(cmsContext context) {
  return static_cast<PieceHead*>(cmsGetContextUserData(context));
}

void* Allocate(cmsContext context, cmsUInt32Number size) {
  if (size > kMost) return nullptr;
  // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): Little CMS wants pieces that can be resized
  void* memory = NotedIfNull(std::malloc(sizeof(PieceHead) + size));
  if (memory == nullptr) return nullptr;
  auto* piece = new (memory) PieceHead();
  if (PieceHead* ring = RingOf(context)) Join(ring, piece);
  return piece + 1;
}

void Release(cmsContext /*context*/, void* data) {
  if (data == nullptr) return;
  PieceHead* piece = static_cast<PieceHead*>(data) - 1;
  Part(piece);
  std::free(piece);  // NOLINT(cppcoreguidelines-no-malloc)
}

void* Resize(cmsContext context, void* data, cmsUInt32Number size) {
  if (data == nullptr) return Allocate(context, size);
  if (size > kMost) return nullptr;
  PieceHead* piece = static_cast<PieceHead*>(data) - 1;
  PieceHead* ring = piece->before == piece ? nullptr : piece->before;
  Part(piece);
  // NOLINTNEXTLINE(cppcoreguidelines-no-malloc)
  void* moved = NotedIfNull(std::realloc(piece, sizeof(PieceHead) + size));
  PieceHead* now = moved != nullptr ? new (moved) PieceHead() : piece;
  if (ring != nullptr) Join(ring, now);
  return moved != nullptr ? now + 1 : nullptr;
}

}  // namespace

cmsContext CreateContext() {
  std::unique_ptr<PieceHead> ring(NotedIfNull(new (std::nothrow) PieceHead()));
  if (!ring) return nullptr;
  cmsPluginMemHandler memory = {};
  memory.base = {cmsPluginMagicNumber, 2060, cmsPluginMemHandlerSig, nullptr};
  memory.MallocPtr = Allocate;
  memory.FreePtr = Release;
  memory.ReallocPtr = Resize;
  const cmsContext context = cmsCreateContext(&memory, ring.get());
  if (context != nullptr) static_cast<void>(ring.release());  // DeleteContext takes it back
  return context;
}

void DeleteContext(cmsContext context) {
  if (context == nullptr) return;
  const std::unique_ptr<PieceHead> ring(RingOf(context));
  cmsDeleteContext(context);
  for (PieceHead* piece = ring->behind; piece != ring.get();) {
    PieceHead* const next = piece->behind;
    std::free(piece);  // NOLINT(cppcoreguidelines-no-malloc)
    piece = next;
  }
}

}  // namespace vkcl::profiler

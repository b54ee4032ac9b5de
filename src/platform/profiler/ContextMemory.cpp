#include "platform/profiler/ContextMemory.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <csetjmp>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "platform/Shortage.h"

namespace vkcl::profiler {
namespace {

// What stands before each piece of memory: its neighbours in the ring of its context.
struct alignas(std::max_align_t) PieceHead {
  explicit PieceHead(std::size_t length = 0) : size(length) {}
  PieceHead(const PieceHead&) = delete;
  PieceHead& operator=(const PieceHead&) = delete;

  PieceHead* before = this;
  PieceHead* behind = this;
  std::size_t size;  // of the piece, without this
};

// The pieces of a context, and the way out of the call of Little CMS that is being made with it.
struct Account {
  PieceHead ring;
  std::jmp_buf* exit = nullptr;
  bool isShort = false;
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
Account* AccountOf(cmsContext context) {
  return static_cast<Account*>(cmsGetContextUserData(context));
}

// Memory is short. There is no way back into the call: version 2.14 goes on with what it did not
// get, or releases what is none of its own.
void* Refuse(Account* account) {
  ++ShortagesMet();
  if (account == nullptr || account->exit == nullptr) return nullptr;
  account->isShort = true;
  std::longjmp(*account->exit, 1);  // NOLINT(cert-err52-cpp): over frames of C alone
}

void* Allocate(cmsContext context, cmsUInt32Number size) {
  if (size > kMost) return nullptr;
  Account* account = AccountOf(context);
  void* memory = ::operator new(sizeof(PieceHead) + size, std::nothrow);
  if (memory == nullptr) return Refuse(account);
  auto* piece = new (memory) PieceHead(size);
  if (account != nullptr) Join(&account->ring, piece);
  return piece + 1;
}

void Release(cmsContext /*context*/, void* data) {
  if (data == nullptr) return;
  PieceHead* piece = static_cast<PieceHead*>(data) - 1;
  Part(piece);
  ::operator delete(piece);
}

void* Resize(cmsContext context, void* data, cmsUInt32Number size) {
  void* moved = Allocate(context, size);
  if (data == nullptr || moved == nullptr) return moved;
  std::memcpy(moved, data, std::min<std::size_t>(size, (static_cast<PieceHead*>(data) - 1)->size));
  Release(context, data);
  return moved;
}

// Contexts serve one thread each, so there is nothing to wait for. A mutex of Little CMS's own
// would ask for memory, and version 2.14 uses it also when there was none.
void* MakeMutex(cmsContext context) { return context; }
void DropMutex(cmsContext /*context*/, void* /*mutex*/) {}
cmsBool LockMutex(cmsContext /*context*/, void* /*mutex*/) { return TRUE; }
void UnlockMutex(cmsContext /*context*/, void* /*mutex*/) {}

}  // namespace

cmsContext CreateContext() {
  std::unique_ptr<Account> account(NotedIfNull(new (std::nothrow) Account()));
  if (!account) return nullptr;
  cmsPluginMutex mutex = {};
  mutex.base = {cmsPluginMagicNumber, 2060, cmsPluginMutexSig, nullptr};
  mutex.CreateMutexPtr = MakeMutex;
  mutex.DestroyMutexPtr = DropMutex;
  mutex.LockMutexPtr = LockMutex;
  mutex.UnlockMutexPtr = UnlockMutex;
  cmsPluginMemHandler memory = {};
  memory.base = {cmsPluginMagicNumber, 2060, cmsPluginMemHandlerSig, &mutex.base};
  memory.MallocPtr = Allocate;
  memory.FreePtr = Release;
  memory.ReallocPtr = Resize;
  const cmsContext context = cmsCreateContext(&memory, account.get());
  if (context != nullptr) static_cast<void>(account.release());  // DeleteContext takes it back
  return context;
}

void DeleteContext(cmsContext context) {
  if (context == nullptr) return;
  const std::unique_ptr<Account> account(AccountOf(context));
  cmsDeleteContext(context);
  for (PieceHead* piece = account->ring.behind; piece != &account->ring;) {
    PieceHead* const next = piece->behind;
    ::operator delete(piece);
    piece = next;
  }
}

bool IsShort(cmsContext context) { return AccountOf(context)->isShort; }

bool CallWithin(cmsContext context, void (*call)(void* argument), void* argument) {
  Account* const account = context != nullptr ? AccountOf(context) : nullptr;
  if (account == nullptr || account->isShort) return false;
  std::jmp_buf exit;
  account->exit = &exit;
  const bool isBack = setjmp(exit) != 0;  // NOLINT(cert-err52-cpp): over frames of C alone
  if (!isBack) call(argument);
  account->exit = nullptr;
  return !isBack;
}

}  // namespace vkcl::profiler

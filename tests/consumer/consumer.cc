#include <cstdio>

#include "handler/StoredSplit.h"
#include "handler/VKCLProfileHandler.h"
#include "profile/TagLayout.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const VKCLProfileHandler handler(AFilePath(argv[1]), 0);
  VKColorParam param;
  std::printf("valid %d, output %d, own %d, parameters %d\n", handler.IsICCFile(),
              handler.IsOutputICCFile(), handler.IsVKCLProfile(), handler.GetVKColorParam(param));
  return handler.IsICCFile() == 1 ? 0 : 1;
}

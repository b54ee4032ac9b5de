// The first steps of the README: open a profile, store a record, read it back.
#include <cstdio>
#include <cstring>

#include "handler/VKCLProfileHandler.h"

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  VKCLProfileHandler handler(AFilePath(argv[1]), 0);
  if (handler.IsOutputICCFile() == 0) {
    std::puts("this is no output profile");
    return 1;
  }

  VKColorParam param;
  std::strcpy(param.Make, "Acme");
  std::strcpy(param.MediaName, "Baryta Gloss 310");
  param.ResolutionX = param.ResolutionY = 720;
  param.ColorMode = 1;  // Cyan, Magenta, Yellow, Black
  if (handler.WriteVKColorParamTag(param) == 0) return 1;

  VKColorParam stored;
  if (handler.GetVKColorParam(stored) == 0) return 1;
  std::printf("%s, %s, %.0f x %.0f dpi\n", stored.Make, stored.MediaName, stored.ResolutionX,
              stored.ResolutionY);
  return 0;
}

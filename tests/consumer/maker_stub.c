/* Stands for the maker's own profiler library in the check that nothing of ours is compiled in its
   place: every function is there, and refuses. */
#include <stddef.h>

#include "platform/profiler/TesselColorProfiler.h"

void* CLNewCLProfileRef(void) { return NULL; }
int CLLoadProfileFromMemory(void* p, const void* b, unsigned int s) { return -1; }
int CLLoadProfileFromFile(void* p, void* f) { return -1; }
int CLWriteProfileToMemory(void* p, void* b, unsigned int s, unsigned int* o) { return -1; }
void CLFreeCLProfileRef(void* p) {}

void* CLNewFileSpecRef(void) { return NULL; }
int CLName2FileSpec(void* f, const char* path) { return -1; }
void CLFreeFileSpecRef(void* f) {}

#define LINK(N)                                                                              \
  void* CLNewCLLink##N##Ref(void) { return NULL; }                                           \
  int CLBuildLink##N(void* l, void* s, void* d, int i) { return -1; }                        \
  int CLLoadLink##N##FromMemory(void* l, const void* b, unsigned int s) { return -1; }       \
  int CLSaveLink##N##ToMemory(void* l, void* b, unsigned int s, unsigned int* o) { return -1; } \
  void CLFreeCLLink##N##Ref(void* l) {}
LINK(8)
LINK(16)

void* CLNewCLProfilerRef(void) { return NULL; }
int CLImportProfilerOptions(void* p, void* f) { return -1; }
int CLGetProfilerOption(void* p, const char* k, void* b) { return -1; }
int CLSetProfilerOption(void* p, const char* k, const char* v) { return -1; }
int CLExportProfilerOptions(void* p, void* f) { return -1; }
void CLFreeCLProfilerRef(void* p) {}

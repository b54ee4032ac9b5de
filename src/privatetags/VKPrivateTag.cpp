#include "privatetags/VKPrivateTag.h"

VKPrivateTag::~VKPrivateTag() { delete[] data; }

// Movable memory blocks: handles that are locked to obtain an address.
#pragma once

#include "interface/types.h"

q5_HMEM q5_MEM_Alloc(std::uint32_t size, bool zero);
bool q5_MEM_Free(q5_HMEM block);
void* q5_MEM_Lock(q5_HMEM block);
// True while an earlier lock still holds the block after this unlock, false once it is free.
bool q5_MEM_Unlock(q5_HMEM block);
// May move the block; on failure the old handle stays valid and null is returned.
q5_HMEM q5_MEM_Resize(q5_HMEM block, std::uint32_t size);
std::uint32_t q5_MEM_Size(q5_HMEM block);
// Probes whether a 160 MiB (large) or 40 MiB allocation would still succeed.
bool q5_MEM_IsMemoryLow(bool large);

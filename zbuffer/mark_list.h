// The module-wide list of marked driver ids. Nodes are prepended and live for the process.
#pragma once

#include <cstdint>

void MarkListMark(std::uint64_t id);
void MarkListUnmark(std::uint64_t id);
bool MarkListIsMarked(std::uint64_t id);

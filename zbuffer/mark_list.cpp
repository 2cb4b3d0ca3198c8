// Singly linked mark list; never freed, so ids stay cheap to re-mark across frames.
#include "zbuffer/mark_list.h"

#include <new>

namespace {

struct MarkNode {
    std::uint64_t id;
    std::int32_t marked;
    MarkNode* next;
};

MarkNode* g_head = nullptr;

MarkNode* Find(std::uint64_t id) {
    for (MarkNode* node = g_head; node != nullptr; node = node->next)
        if (node->id == id) return node;
    return nullptr;
}

} // namespace

void MarkListMark(std::uint64_t id) {
    if (MarkNode* node = Find(id)) {
        node->marked = 1;
        return;
    }
    if (auto* node = new (std::nothrow) MarkNode{id, 1, g_head}) g_head = node;
}

void MarkListUnmark(std::uint64_t id) {
    if (MarkNode* node = Find(id)) node->marked = 0;
}

bool MarkListIsMarked(std::uint64_t id) {
    const MarkNode* node = Find(id);
    return node != nullptr && node->marked != 0;
}

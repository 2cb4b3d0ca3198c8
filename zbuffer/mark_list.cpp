// The mark list: found by walking, grown at the front, freed with its driver.
#include "zbuffer/mark_list.h"

#include <new>

MarkList::~MarkList() {
    while (head_ != nullptr) {
        Node* next = head_->next;
        delete head_;
        head_ = next;
    }
}

MarkList::Node* MarkList::Find(std::uint64_t id) const {
    for (Node* node = head_; node != nullptr; node = node->next)
        if (node->id == id) return node;
    return nullptr;
}

void MarkList::Mark(std::uint64_t id) {
    if (Node* node = Find(id)) {
        node->marked = 1;
        return;
    }
    if (auto* node = new (std::nothrow) Node{id, 1, head_}) head_ = node;
}

void MarkList::Unmark(std::uint64_t id) {
    if (Node* node = Find(id)) node->marked = 0;
}

bool MarkList::IsMarked(std::uint64_t id) const {
    const Node* node = Find(id);
    return node != nullptr && node->marked != 0;
}

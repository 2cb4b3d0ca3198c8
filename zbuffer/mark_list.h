// A driver's list of marked ids: a singly linked list whose nodes are prepended and live as
// long as the list, so an id stays cheap to re-mark frame after frame.
#pragma once

#include <cstdint>

class MarkList {
public:
    MarkList() = default;
    ~MarkList();
    MarkList(const MarkList&) = delete;
    MarkList& operator=(const MarkList&) = delete;

    void Mark(std::uint64_t id);
    void Unmark(std::uint64_t id);
    bool IsMarked(std::uint64_t id) const;

private:
    struct Node {
        std::uint64_t id;
        std::int32_t marked;
        Node* next;
    };
    Node* Find(std::uint64_t id) const;

    Node* head_ = nullptr;
};

// Memory for the records of one tree: taken one behind another from few large regions, where a heap would
// be searched for each of a million. A region goes back to the system with the last pointer to a record
// in it, which may be long after the pool, from whichever thread drops that pointer.
#pragma once

#include "script/recent_texts.h"

#include <atomic>
#include <cstddef>
#include <memory>

namespace ast {

// Used by one thread. Throws std::bad_alloc where memory runs out.
class NodePool {
public:
    NodePool() = default;
    ~NodePool();
    NodePool(const NodePool &) = delete;
    NodePool &operator=(const NodePool &) = delete;

    // A new record with its defaults.
    template<typename Node>
    [[nodiscard]] std::shared_ptr<Node> make() {
        return std::allocate_shared<Node>(Allocator<Node>(withRoomFor(sizeof(Node))));
    }

    // For the texts of the same tree.
    RecentTexts texts;

private:
    // Stands at the start of its own memory.
    struct Region {
        // Records that are in use, less `held`, as long as the pool fills the region: then only a record
        // that dies has to be counted where other threads see it.
        std::atomic<std::ptrdiff_t> live;
        std::ptrdiff_t taken = 0;
        char *next;
        char *end;
        std::size_t wholeSize;

        void *take(std::size_t size);
        void drop(std::ptrdiff_t count) noexcept;
    };

    // What a shared pointer gets its memory from; it keeps a copy beside the record.
    template<typename Node>
    struct Allocator {
        using value_type = Node;

        explicit Allocator(Region *from)
            : region(from) {}
        template<typename Other>
        Allocator(const Allocator<Other> &other)
            : region(other.region) {}

        Node *allocate(std::size_t count) {
            static_assert(alignof(Node) <= alignment);
            return static_cast<Node *>(region->take(count * sizeof(Node)));
        }
        void deallocate(Node *, std::size_t) noexcept { region->drop(1); }

        friend bool operator==(const Allocator &a, const Allocator &b) {
            return a.region == b.region;
        }
        friend bool operator!=(const Allocator &a, const Allocator &b) { return !(a == b); }

        Region *region;
    };

    static constexpr std::size_t alignment = alignof(void *);

    Region *withRoomFor(std::size_t size);
    void closeRegion() noexcept;

    Region *current = nullptr;
    std::size_t nextSize = 0;
};

} // namespace ast

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace fleet::console {

/// Texts that many devices have in common, each there once: as long as somebody uses it.
class Pool {
  public:
    using Index = std::uint32_t;
    static constexpr Index empty = 0;  ///< of the empty text, which is always there

    Pool() { Take(""); }
    Pool(Pool const &) = delete;
    Pool &operator=(Pool const &) = delete;

    /// The index of \a text, for one use more.
    Index Take(std::string_view text) {
        if (auto const found = _indices.find(text); found != _indices.end()) {
            ++_slots[found->second].uses;
            return found->second;
        }
        Index index = static_cast<Index>(_slots.size());
        if (_free.empty()) {
            _slots.emplace_back();
        } else {
            index = _free.back();
            _free.pop_back();
        }
        _slots[index] = {&_indices.emplace(text, index).first->first, 1};
        return index;
    }
    /// One use less.
    void Drop(Index index) {
        Slot &slot = _slots[index];
        if (index == empty || --slot.uses > 0)
            return;
        _indices.erase(_indices.find(*slot.text));
        slot.text = nullptr;
        _free.push_back(index);
    }
    /// One use of \a index becomes one of \a text.
    void Change(Index &index, std::string_view text) {
        if (*_slots[index].text == text)
            return;
        Drop(index);
        index = Take(text);
    }

    std::string const &Text(Index index) const { return *_slots[index].text; }
    std::optional<Index> Find(std::string_view text) const {
        auto const found = _indices.find(text);
        return found == _indices.end() ? std::nullopt : std::optional(found->second);
    }
    std::size_t Size() const { return _indices.size(); }

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    struct Slot {
        std::string const *text = nullptr;
        std::uint32_t uses = 0;
    };
    std::unordered_map<std::string, Index, Hash, std::equal_to<>> _indices;
    std::vector<Slot> _slots;
    std::vector<Index> _free;
};

}  // namespace fleet::console

// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_NAMETABLE_H
#define TOOLKIT_INTERNAL_TEXT_NAMETABLE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// Values by their names, texts or views of texts, which are compared exactly. The entries lie side by side in
// the order in which they were added, and are found through a table of their hashes: a look-up touches memory
// in few places and makes no text. Nothing is ever removed singly.
template <class Value, class Name = TString<wchar_t>>
class NameTable
{
public:
    using Entry = std::pair<Name, Value>;

    const std::vector<Entry>& GetEntries() const { return m_entries; }

    // Null when there is none; valid until something is added.
    const Value* Find(const Name& name) const
    {
        if (m_entries.empty())
            return nullptr;
        const Slot slot = m_slots[FindSlot(name, HashOf(name))];
        return slot.entry == 0 ? nullptr : &m_entries[slot.entry - 1].second;
    }
    Value* Find(const Name& name) { return const_cast<Value*>(std::as_const(*this).Find(name)); }

    // The value of that name, which is made of `arguments` if it is new; valid until something is added.
    template <class... Arguments>
    Value& Add(Name name, Arguments&&... arguments)
    {
        // Half of the slots stay free, so that looking for one always ends, and soon.
        if (m_slots.size() <= 2 * m_entries.size())
            Grow();
        const std::uint32_t hash = HashOf(name);
        Slot& slot = m_slots[FindSlot(name, hash)];
        if (slot.entry == 0)
        {
            m_entries.emplace_back(std::move(name), Value(std::forward<Arguments>(arguments)...));
            slot = {hash, static_cast<std::uint32_t>(m_entries.size())};
        }
        return m_entries[slot.entry - 1].second;
    }

private:
    // The entry's number counts from 1; 0 is a free slot.
    struct Slot
    {
        std::uint32_t hash;
        std::uint32_t entry;
    };

    static std::uint32_t HashOf(const Name& name)
    {
        return static_cast<std::uint32_t>(
            std::hash<std::basic_string_view<typename Name::value_type>>()(name));
    }

    // The slot of that name, or the free one where it belongs.
    std::size_t FindSlot(const Name& name, std::uint32_t hash) const
    {
        const std::size_t mask = m_slots.size() - 1;
        std::size_t i = hash & mask;
        while (m_slots[i].entry != 0 &&
               (m_slots[i].hash != hash || m_entries[m_slots[i].entry - 1].first != name))
            i = (i + 1) & mask;
        return i;
    }

    void Grow()
    {
        std::vector<Slot> slots(m_slots.empty() ? 8 : 2 * m_slots.size());
        const std::size_t mask = slots.size() - 1;
        for (const Slot& slot : m_slots)
        {
            std::size_t i = slot.hash & mask;
            while (slot.entry != 0 && slots[i].entry != 0)
                i = (i + 1) & mask;
            if (slot.entry != 0)
                slots[i] = slot;
        }
        m_slots = std::move(slots);
    }

    std::vector<Entry> m_entries;
    std::vector<Slot> m_slots;
};

} // namespace Toolkit

#endif

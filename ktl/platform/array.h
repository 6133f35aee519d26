#pragma once

#include <limits>
#include <utility>
#include <vector>

#include "ktl/platform/exception.h"
#include "ktl/platform/types.h"

/// A growable array, kept in one block. A bad index throws `CInvalidArgException` and changes nothing. New elements are
/// value-initialised. `ARG` is the type that elements are handed in as.
template <class TYPE, class ARG = const TYPE &>
class CArray {
  public:
    int GetSize() const { return static_cast<int>(m_data.size()); }
    int GetCount() const { return GetSize(); }
    bool IsEmpty() const { return m_data.empty(); }
    /// -1 when empty.
    int GetUpperBound() const { return GetSize() - 1; }

    /// Grows or cuts; 0 frees the memory. `growBy` is accepted and has no effect: growth is geometric.
    void SetSize(int size, int growBy = -1) {
        (void)growBy;
        if (size < 0) throw CInvalidArgException();
        if (size == 0) {
            RemoveAll();
        } else {
            m_data.resize(static_cast<std::size_t>(size));
        }
    }
    void Reserve(int capacity) { m_data.reserve(static_cast<std::size_t>(capacity)); }
    void FreeExtra() { m_data.shrink_to_fit(); }
    void RemoveAll() { std::vector<TYPE>().swap(m_data); }

    const TYPE &GetAt(int index) const { return m_data[Checked(index)]; }
    TYPE &GetAt(int index) { return m_data[Checked(index)]; }
    void SetAt(int index, ARG element) { m_data[Checked(index)] = element; }
    TYPE &ElementAt(int index) { return m_data[Checked(index)]; }
    const TYPE &ElementAt(int index) const { return m_data[Checked(index)]; }
    TYPE &operator[](int index) { return m_data[Checked(index)]; }
    const TYPE &operator[](int index) const { return m_data[Checked(index)]; }

    /// Null when empty.
    TYPE *GetData() { return m_data.empty() ? nullptr : m_data.data(); }
    const TYPE *GetData() const { return m_data.empty() ? nullptr : m_data.data(); }

    /// The index of the new element.
    int Add(ARG element) {
        m_data.push_back(element);
        return GetUpperBound();
    }
    /// Adds `count` new elements at the end; the first of them, or null when `count` is 0.
    TYPE *Extend(int count) {
        if (count < 0 || count > std::numeric_limits<int>::max() - GetSize()) throw CInvalidArgException();
        m_data.resize(m_data.size() + static_cast<std::size_t>(count));
        return count > 0 ? m_data.data() + (m_data.size() - static_cast<std::size_t>(count)) : nullptr;
    }
    /// The old size. An array is never appended to itself: throws.
    int Append(const CArray &source) {
        if (this == &source) throw CInvalidArgException();
        const int oldSize = GetSize();
        m_data.insert(m_data.end(), source.m_data.begin(), source.m_data.end());
        return oldSize;
    }
    void Copy(const CArray &source) {
        if (this == &source) throw CInvalidArgException();
        m_data = source.m_data;
    }
    /// Stores at any index from 0, growing when it lies past the end.
    void SetAtGrow(int index, ARG element) {
        if (index < 0) throw CInvalidArgException();
        TYPE copy = element;
        if (index >= GetSize()) SetSize(index + 1);
        m_data[static_cast<std::size_t>(index)] = std::move(copy);
    }
    void InsertAt(int index, ARG element, int count = 1) {
        if (index < 0 || count < 1) throw CInvalidArgException();
        TYPE copy = element;
        if (index > GetSize()) SetSize(index);
        m_data.insert(m_data.begin() + index, static_cast<std::size_t>(count), copy);
    }
    void RemoveAt(int index, int count = 1) {
        if (index < 0 || count < 0 || index > GetSize() || count > GetSize() - index) throw CInvalidArgException();
        m_data.erase(m_data.begin() + index, m_data.begin() + index + count);
    }

    auto begin() { return m_data.begin(); }
    auto end() { return m_data.end(); }
    auto begin() const { return m_data.begin(); }
    auto end() const { return m_data.end(); }

  private:
    std::size_t Checked(int index) const {
        if (index < 0 || index >= GetSize()) throw CInvalidArgException();
        return static_cast<std::size_t>(index);
    }

    std::vector<TYPE> m_data;
};

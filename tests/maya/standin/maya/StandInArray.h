// Stand-in support (no devkit header of this name): the common members of Maya's value arrays.
#pragma once

#include <maya/MStatus.h>

#include <vector>

template <class E> class MStandInArray
{
  public:
    MStandInArray() = default;
    MStandInArray(unsigned int initialSize, const E& value = E()) : m_items(initialSize, value) {}
    MStatus set(const E& element, unsigned int index);
    unsigned int length() const { return static_cast<unsigned int>(m_items.size()); }
    MStatus append(const E& element)
    {
        m_items.push_back(element);
        return MStatus();
    }
    MStatus clear()
    {
        m_items.clear();
        return MStatus();
    }
    const E& operator[](unsigned int index) const { return m_items.at(index); }
    E& operator[](unsigned int index) { return m_items.at(index); }

  private:
    std::vector<E> m_items;
};

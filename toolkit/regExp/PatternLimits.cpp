// SPDX-License-Identifier: MIT
#include "toolkit/regExp/PatternLimits.h"

namespace Toolkit
{

struct PatternLimits::Values
{
    std::uint32_t steps = 10000000;
    std::optional<std::size_t> memory;
};

PatternLimits::PatternLimits() : m_pValues(std::make_unique<Values>()) {}

PatternLimits::PatternLimits(const PatternLimits& other)
    : m_pValues(std::make_unique<Values>(*other.m_pValues))
{
}

PatternLimits& PatternLimits::operator=(const PatternLimits& other)
{
    *m_pValues = *other.m_pValues;
    return *this;
}

PatternLimits::~PatternLimits() = default;

PatternLimits& PatternLimits::Steps(std::uint32_t steps)
{
    m_pValues->steps = steps;
    return *this;
}

PatternLimits& PatternLimits::Memory(std::size_t bytes)
{
    m_pValues->memory = bytes;
    return *this;
}

std::uint32_t PatternLimits::GetSteps() const
{
    return m_pValues->steps;
}

const std::optional<std::size_t>& PatternLimits::GetMemory() const
{
    return m_pValues->memory;
}

} // namespace Toolkit

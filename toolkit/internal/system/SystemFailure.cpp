// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/SystemFailure.h"

#include <cstring>

namespace Toolkit
{

Failure SystemFailure(std::string_view what, std::string_view name, int error)
{
    std::string message(what);
    if (!name.empty())
        message.append(" ").append(name);
    message.append(": ").append(SystemReason(error));
    return Failure(std::error_code(error, std::generic_category()), std::move(message));
}

std::string SystemReason(int error)
{
    const char* const words = strerrordesc_np(error);
    return words != nullptr ? words : "unknown error " + std::to_string(error);
}

} // namespace Toolkit

// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINIPCMESSAGES_H
#define TOOLKIT_TESTS_REFERENCE_PLAINIPCMESSAGES_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace ToolkitTest
{

// The messages in bytes that are all there, copied part by part: the plain form of what the reader finds in
// them as they arrive.
class PlainIpcMessages
{
public:
    // By 'c' the code, by 't' the text, by 'f' the format, by 'd' the data; only what the message has.
    using Message = std::map<char, std::string>;

    explicit PlainIpcMessages(const std::string& bytes) : rest(bytes)
    {
        while (Read())
            continue;
    }

    std::vector<Message> messages;
    // What is no message, or none yet.
    std::string rest;
    bool broken = false;

private:
    // False without another message.
    bool Read()
    {
        static const std::map<char, std::string> layouts = {
            {1, "fd"}, {2, "tf"}, {3, "tfd"}, {4, "t"}, {6, "tfd"}, {7, "t"}, {9, ""}, {10, "t"}, {11, ""}};
        if (rest.empty())
            return false;
        const auto layout = layouts.find(rest[0]);
        broken = layout == layouts.end();
        if (broken)
            return false;
        Message message = {{'c', rest.substr(0, 1)}};
        std::string left = rest.substr(1);
        for (const char part : layout->second)
            if (!Take(left, part != 'f', message[part]))
                return false;
        messages.push_back(message);
        rest = left;
        return true;
    }

    // Takes one byte, or a size and that many, from `left`.
    bool Take(std::string& left, bool sized, std::string& part)
    {
        const std::size_t head = sized ? 4 : 0;
        if (left.size() < head)
            return false;
        std::size_t size = sized ? 0 : 1;
        for (std::size_t i = head; i-- > 0;)
            size = size * 256 + static_cast<unsigned char>(left[i]);
        broken = size > std::size_t{64} * 1024 * 1024;
        if (broken || left.size() - head < size)
            return false;
        part = left.substr(head, size);
        left.erase(0, head + size);
        return true;
    }
};

} // namespace ToolkitTest

#endif

// SPDX-License-Identifier: MIT
#include <map>
#include <string>

#include <toolkit/core/Plugin.h>

namespace
{

struct Speaker : Toolkit::Plugin
{
    virtual std::string Speak(const std::string& word) = 0;
};
TOOLKIT_PLUGIN_INTERFACE(Speaker, "org.example.Speaker", 1);

// Templates of the standard library have symbols that would keep a library in memory.
class Repeater : public Speaker
{
public:
    std::string Speak(const std::string& word) override
    {
        static std::map<std::string, int> s_words;
        return word + std::to_string(++s_words[word]);
    }
};

} // namespace

TOOLKIT_PLUGIN(Repeater, Speaker, "repeater", "1.0");

// SPDX-License-Identifier: MIT
#include <memory>

#include <dlfcn.h>

#include "bench/Bench.h"
#include "bench/plugin/Plugin.h"
#include "toolkit/core/Plugins.h"

namespace
{

void LoadBare()
{
    void* const library = dlopen(BENCH_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    const auto* const entry = static_cast<const Toolkit::PluginEntry*>(dlsym(library, "ToolkitPluginEntry"));
    const Toolkit::PluginContext none;
    std::unique_ptr<Toolkit::Plugin> plugin(entry->make(&none));
    benchmark::DoNotOptimize(static_cast<ToolkitBench::Adder*>(plugin.get())->Add(1, 2));
    plugin.reset();
    dlclose(library);
}

} // namespace

void ToolkitBench::Register()
{
    WholeOperation("LoadPlugin/Toolkit",
                   [plugins = std::make_shared<Toolkit::Plugins<Adder>>()]
                   {
                       plugins->Load(BENCH_PLUGIN).value();
                       benchmark::DoNotOptimize(plugins->Find("plain")->Add(1, 2));
                       plugins->Unload("plain").value();
                   });
    WholeOperation("LoadPlugin/limit", &LoadBare);
}

// SPDX-License-Identifier: MIT
#include <memory>

#include <gtest/gtest.h>

#include "tests/faults/OutOfMemory.h"
#include "tests/support/RecordingModule.h"
#include "toolkit/core/DllToolkit.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/log/ILogger.h"

using namespace Toolkit;
using ToolkitTest::Attempt;

namespace
{

const TString<wchar_t> c_strText(L"a text that does not fit into the string object itself");

struct IdleModule : LibModule
{
    void Initialize() override {}
    void Release() override {}
};

} // namespace

TEST(OutOfMemory, IsSurvivedByCore)
{
    ToolkitTest::FailEachAllocation({
        {"TString::TString",
         [](const Attempt& attempt)
         {
             TString<wchar_t> text;
             const bool made = attempt([&] { text = TString<wchar_t>(c_strText.c_str()); });
             EXPECT_EQ(made ? c_strText : TString<wchar_t>(), text);
         }},
        {"TString::HasSubstring", [](const Attempt& attempt)
         { attempt([] { EXPECT_TRUE(c_strText.HasSubstring(L"THE STRING OBJECT ITSELF")); }); }},
        {"TString::compareNoCase",
         [](const Attempt& attempt) { attempt([] { EXPECT_EQ(1, c_strText.compareNoCase(L"A TEXT")); }); }},
        {"TString::Replace",
         [](const Attempt& attempt)
         {
             TString<wchar_t> text(c_strText);
             const TString<wchar_t> with(std::wstring(100, L'-'));
             attempt([&] { text.Replace(L"e", with); });
             text.Replace(L"e", L"");
             EXPECT_FALSE(text.Contains(L"e"));
         }},
        {"smart_ptr::smart_ptr(T*)", [](const Attempt& attempt)
         { attempt([] { const smart_ptr<TString<wchar_t>> pointer(new TString<wchar_t>(c_strText)); }); }},
        {"smart_ptr::operator=(T*)",
         [](const Attempt& attempt)
         {
             smart_ptr<TString<wchar_t>> pointer(new TString<wchar_t>(c_strText));
             attempt([&] { pointer = new TString<wchar_t>(c_strText); });
             EXPECT_EQ(c_strText, *pointer);
         }},
        {"smart_ptr::operator=(const smart_ptr&)",
         [](const Attempt& attempt)
         {
             smart_ptr<TString<wchar_t>> pointer(new TString<wchar_t>(c_strText));
             smart_ptr<TString<wchar_t>> other;
             attempt([&] { other = pointer; });
             EXPECT_EQ(c_strText, *pointer);
         }},
        {"smart_ptr::Reset",
         [](const Attempt& attempt)
         {
             smart_ptr<TString<wchar_t>> pointer(new TString<wchar_t>(c_strText));
             const bool reset = attempt([&] { pointer.Reset(); });
             EXPECT_EQ(reset, pointer.IsNull());
         }},
        {"LibModuleManager::Register",
         [](const Attempt& attempt)
         {
             IdleModule module;
             LibModuleManager manager;
             attempt([&] { manager.Register(&module); });
             manager.Register(&module);
             manager.Initialize(false);
             manager.Release(false);
         }},
        {"LibModuleManager::Unregister",
         [](const Attempt& attempt)
         {
             IdleModule module;
             LibModuleManager manager;
             manager.Register(&module);
             manager.Initialize(false);
             attempt([&] { manager.Unregister(&module); });
             manager.Unregister(&module);
             manager.Release(false);
         }},
        {"LibModuleManager::Initialize",
         [](const Attempt& attempt)
         {
             LibModuleManager manager;
             attempt([&] { manager.Initialize(true); });
             manager.Initialize(true);
             manager.Release(true);
             manager.Release(true);
         }},
        {"LibModuleManager::Release",
         [](const Attempt& attempt)
         {
             LibModuleManager manager;
             manager.Initialize(true);
             attempt([&] { manager.Release(true); });
             manager.Release(true);
         }},
        {"DllToolkitLoad",
         [](const Attempt& attempt)
         {
             attempt([] { DllToolkitLoad(); });
             DllToolkitLoad();
             DllToolkitUnload();
         }},
        {"DllToolkitUnload",
         [](const Attempt& attempt)
         {
             DllToolkitLoad();
             LibModuleManager::s_pInstance->Initialize(true);
             attempt([] { DllToolkitUnload(); });
             if (LibModuleManager::s_pInstance != nullptr)
                 LibModuleManager::s_pInstance->Release(true);
             else
                 LibModuleManager().Release(true);
             DllToolkitUnload();
         }},
        {"ToolkitModule::Initialize",
         [](const Attempt& attempt)
         {
             DllToolkitLoad();
             attempt([] { LibModuleManager::s_pInstance->Initialize(false); });
             LibModuleManager::s_pInstance->Initialize(false);
             EXPECT_NE(nullptr, ILogger::s_pInstance);
             LibModuleManager::s_pInstance->Release(false);
             DllToolkitUnload();
         }},
        {"ToolkitModule::Release",
         [](const Attempt& attempt)
         {
             DllToolkitLoad();
             LibModuleManager::s_pInstance->Initialize(false);
             attempt([] { LibModuleManager::s_pInstance->Release(false); });
             LibModuleManager::s_pInstance->Release(false);
             EXPECT_EQ(nullptr, ILogger::s_pInstance);
             DllToolkitUnload();
         }},
        {"ToolkitSession::ToolkitSession",
         [](const Attempt& attempt)
         {
             attempt(
                 []
                 {
                     const auto session = std::make_unique<ToolkitSession>();
                     ToolkitTest::FailingMemory::Disarm();
                 });
             EXPECT_EQ(nullptr, LibModuleManager::s_pInstance);
             const ToolkitSession session;
         }},
        {"ToolkitSession::~ToolkitSession",
         [](const Attempt& attempt)
         {
             auto session = std::make_unique<ToolkitSession>();
             attempt([&] { session.reset(); });
             // What had to stay is taken back with the memory for it.
             if (LibModuleManager::s_pInstance == nullptr)
                 return;
             LibModuleManager::s_pInstance->Release(true);
             DllToolkitUnload();
         }},
    });
}

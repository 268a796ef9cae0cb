// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_INSTANCE_H
#define TOOLKIT_APP_INSTANCE_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

/// One application of its user: the first process that claims a key is the first instance until it ends,
/// however it ends, and the others ask it to execute commands and get its answers. The lock and the socket
/// lie in the user's runtime folder, for this user alone. An object is used by one thread at a time, but for
/// `Ask`, which any thread may call; one that was moved from is not the first, and its `Ask` fails with
/// `Errc::Refused`. A forked copy of the process has no part in it. `IPCClient` and
/// `IPCServer` take part under the key as their service: see `Claim`, `Ask` and `Serve`.
///
/// @code
/// Toolkit::Result<Toolkit::Instance> instance = Toolkit::Instance::Claim("org.example.watch");
/// if (!instance)
///     return Fail(instance.error().Message());
/// if (!instance->IsFirst())
///     return Print(instance->Ask({"open", file}, 2s));
/// instance->Serve([](const Toolkit::Instance::Command& command)
///                 { return Toolkit::Instance::Answer(0, Execute(command.Arguments(), command.Folder()));
///                 });
/// @endcode
class TOOLKIT_API Instance
{
public:
    /// What another process asks for.
    class TOOLKIT_API Command
    {
    public:
        /// The library makes commands; a test of a handler may, too.
        Command(std::vector<std::string> arguments, std::filesystem::path folder);
        Command(const Command& other) noexcept;
        Command& operator=(const Command& other) noexcept;
        ~Command();

        /// Byte for byte as they were given to `Ask`.
        const std::vector<std::string>& Arguments() const noexcept;
        /// The working folder of the asker, to which relative paths among the arguments belong; empty where
        /// there is none, and for a command of an `IPCClient`.
        const std::filesystem::path& Folder() const noexcept;

    private:
        struct Content;
        std::shared_ptr<const Content> m_pContent;
    };

    /// What the handler returns, and the asker gets, byte for byte.
    class TOOLKIT_API Answer
    {
    public:
        /// A code, which means what the application says it does, and a text.
        explicit Answer(int code = 0, std::string text = std::string());
        Answer(const Answer& other) noexcept;
        Answer& operator=(const Answer& other) noexcept;
        ~Answer();

        /// 0 unless the handler says otherwise.
        int Code() const noexcept;
        /// Any bytes, of any length.
        const std::string& Text() const noexcept;

    private:
        struct Content;
        std::shared_ptr<const Content> m_pContent;
    };

    /// Executes one command and returns what its asker gets.
    using Handler = std::function<Answer(const Command&)>;
    /// Calls a function some time, on a thread of its choice.
    using Executor = std::function<void(std::function<void()>)>;

    /// How commands are executed.
    enum Mode : std::uint32_t
    {
        /// Each command at once, on a thread of its own.
        Parallel = 1
    };

    /// Becomes the first instance of this key, or finds that there is one. Any bytes are a key; an empty key
    /// fails with `std::errc::invalid_argument`. It fails with the code of the system where the runtime
    /// folder cannot be made, is not this user's or has no locks or sockets. An `IPCServer` of this user that
    /// listens at the local socket of that name is a first instance, too.
    static Result<Instance> Claim(std::string_view key);

    Instance(Instance&& other) noexcept;
    /// Ends the instance that was here, as its destructor does.
    Instance& operator=(Instance&& other) noexcept;
    /// Waits for the handlers that run and sends their answers; everyone else who asks gets a failure at
    /// once. Never within a handler.
    ~Instance();

    /// True in the process that executes the commands.
    bool IsFirst() const noexcept;

    /// Has the first instance execute a command, and waits for the answer, also while the first instance does
    /// not serve yet. `Errc::NotAnswered`: the first instance ends, has ended, or could not take the command.
    /// `Errc::Refused`: somebody else than this user listens.
    /// An `IPCServer` gets the one argument as its command, or several as the command line that
    /// `CmdLineParser` takes apart; it fails with `Errc::NotAnswered` for arguments that it
    /// cannot take. What it took has the answer 0 without a text.
    Result<Answer> Ask(const std::vector<std::string>& arguments) const;
    /// The same with a time-out, after which it fails with `Errc::NotAnswered`.
    Result<Answer> Ask(const std::vector<std::string>& arguments, std::chrono::nanoseconds timeout) const;

    /// Executes what is asked for from now on, in the first instance; elsewhere, and the second time, it does
    /// nothing. One command after the other, in the order in which they come, on a thread of its own or by
    /// the executor; or each at once. What a handler throws is an answer of code 1 with its `what()`; one
    /// that ends its thread gives its asker a failure. Where there are no threads to be had, or the executor
    /// throws, askers get a failure. The command of an `IPCClient` is one argument, and its answer is for
    /// nobody. A handler runs with the signal mask that the caller of this had; the library's
    /// other threads block all signals.
    void Serve(Handler handler);
    /// The same, but the executor calls the handler, one command after the other.
    void Serve(Handler handler, Executor executor);
    /// The same, but each command is executed at once, on a thread of its own.
    void Serve(Handler handler, Mode mode);

private:
    struct Content;

    explicit Instance(std::unique_ptr<Content> content) noexcept;
    void Serve(Handler handler, Executor executor, bool isParallel);

    std::unique_ptr<Content> m_pContent;
};

} // namespace Toolkit

#endif

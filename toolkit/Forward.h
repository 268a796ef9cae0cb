// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FORWARD_H
#define TOOLKIT_FORWARD_H

/// \file
/// Declares the library's classes for headers that only name them.

/// All classes of the library. The guide to new code says which of them are made for it.
namespace Toolkit
{

template <class C>
class TString;
struct smart_ptr_policy;
struct smart_ptr_array_policy;
template <class T, class Policy>
class smart_ptr;
template <class T>
class EventNotifier;

struct ArchiveEntriesFlags;
class ArchiveZip;
class ArchiveZipEntry;
class B64;
class BackgroundOperation;
class BackgroundOperationHandler;
class Bytes;
class CmdLineOption;
class CmdLineParser;
class ConsoleLogger;
class CultureInfo;
class DateTime;
class DebuggerLogger;
class Directory;
class DynamicLibrary;
class EventObject;
class EventPump;
class FFile;
class FileLogger;
class FSInputSerializer;
class FSOutputSerializer;
class FSSerializer;
class FSStream;
class Group;
class GroupCollection;
class ILogger;
class IniFile;
class InputStream;
class IPCClient;
class IPCConnectionEvent;
class IPCConnectionEventHelper;
class IPCInternalServer;
class IPCServer;
class ISerialize;
class IStream;
class LibModule;
class LibModuleManager;
class Locales;
class LogLine;
class LogText;
class MacAutoreleasePool;
class MatchResult;
class Mutex;
class MutexInternal;
class MutexLock;
class Network;
class NullLogger;
class PathManager;
class QP;
class RegExp;
class RegExpException;
struct RegExpOptions;
class RestartManagment;
class Serializer;
struct SetSeverity;
class SingleApplicationInstance;
class SystemInfo;
class TextFile;
class TextInputStream;
class Thread;
class ToolkitModule;
class ToolkitSession;
class UTF7;
class UTF8;
class Version;
class WxLogForwarder;
class ZipInputStream;

namespace Threading
{
class IRunnable;
class Threadable;
} // namespace Threading

} // namespace Toolkit

#endif

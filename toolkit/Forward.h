#ifndef TOOLKIT_FORWARD_H
#define TOOLKIT_FORWARD_H

// Declares the library's classes for headers that only name them.

namespace Toolkit
{

template <class C>
class TString;
struct smart_ptr_policy;
struct smart_ptr_array_policy;
template <class T, class Policy>
class smart_ptr;

class B64;
class Bytes;
class ConsoleLogger;
class DebuggerLogger;
class EventObject;
class FFile;
class Group;
class GroupCollection;
class FSInputSerializer;
class FSOutputSerializer;
class FSSerializer;
class FSStream;
class ILogger;
class ISerialize;
class IStream;
class LogLine;
class LogText;
class MatchResult;
class Mutex;
class MutexInternal;
class MutexLock;
class NullLogger;
class PathManager;
class RegExp;
class RegExpException;
struct RegExpOptions;
class QP;
class Serializer;
struct SetSeverity;
class Thread;
class UTF7;
class UTF8;
class Version;

namespace Threading
{
class IRunnable;
class Threadable;
} // namespace Threading

} // namespace Toolkit

#endif

// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/FileRights.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <sys/xattr.h>
#include <unistd.h>

namespace Toolkit
{

namespace
{

const char* const c_strAccessList = "system.posix_acl_access";
const mode_t s_uPermissions = 0777;
const mode_t s_uOwner = 0700;

// The kernel's form of an access control list (linux/posix_acl_xattr.h), little-endian: a version of 4 bytes,
// then entries of 8, which are a tag, permissions and an id.
const std::size_t s_uListHead = 4;
const std::size_t s_uListEntry = 8;
const unsigned int s_uTagGroup = 0x04;
const unsigned int s_uTagMask = 0x10;
const unsigned int s_uTagOthers = 0x20;

enum class Answer
{
    Found,
    Missing,
    Unknown
};

// The bytes of an attribute, which may grow meanwhile.
Answer ReadAttribute(int file, const char* name, std::string& value)
{
    for (;;)
    {
        const ssize_t size = fgetxattr(file, name, nullptr, 0);
        if (size < 0)
            return errno == ENODATA || errno == EOPNOTSUPP ? Answer::Missing : Answer::Unknown;
        value.resize(static_cast<std::size_t>(size));
        const ssize_t read = fgetxattr(file, name, value.data(), value.size());
        if (read >= 0)
        {
            value.resize(static_cast<std::size_t>(read));
            return Answer::Found;
        }
        if (errno != ERANGE)
            return Answer::Unknown;
    }
}

// The names of a file's attributes, each ended by a NUL.
std::string AttributeNames(int file)
{
    std::string names;
    for (;;)
    {
        const ssize_t size = flistxattr(file, nullptr, 0);
        names.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        const ssize_t read = names.empty() ? 0 : flistxattr(file, names.data(), names.size());
        if (read >= 0 || errno != ERANGE)
        {
            names.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
            return names;
        }
    }
}

// Rights are copied apart, and what the kernel grants or knows of the old content is not true of the new one.
bool IsCopied(std::string_view name)
{
    for (const std::string_view left : {"system.", "security.capability", "security.ima", "security.evm"})
        if (name.substr(0, left.size()) == left)
            return false;
    return true;
}

// False when there is no room for one.
bool CopyAttributes(int from, int to)
{
    const std::string names = AttributeNames(from);
    std::string value;
    for (const char* name = names.data(); name < names.data() + names.size(); name += std::strlen(name) + 1)
        if (IsCopied(name) && ReadAttribute(from, name, value) == Answer::Found &&
            fsetxattr(to, name, value.data(), value.size(), 0) != 0 && (errno == ENOSPC || errno == EDQUOT))
            return false;
    return true;
}

bool IsForbidden(int error)
{
    return error == EPERM || error == EINVAL;
}

// Only root gives files away, and only a member of the group may choose it.
bool CopyOwner(const struct stat& status, int to, struct stat& now)
{
    if (fstat(to, &now) != 0)
        return false;
    if (now.st_uid == status.st_uid && now.st_gid == status.st_gid)
        return true;
    if (fchown(to, status.st_uid, status.st_gid) != 0 &&
        fchown(to, static_cast<uid_t>(-1), status.st_gid) != 0 && !IsForbidden(errno))
        return false;
    return fstat(to, &now) == 0;
}

// What the group and the others of the new file may do at most. Where the group is another one, its members
// were others before, and the members of the old one are others now: both may do what both might.
struct Limits
{
    Limits(unsigned int owner, unsigned int group, unsigned int others, bool ownerIsKept, bool groupIsKept)
        : m_uGroup(ownerIsKept ? group : group & owner), m_uOthers(ownerIsKept ? others : others & owner)
    {
        if (!groupIsKept)
            m_uGroup = m_uOthers = m_uGroup & m_uOthers;
    }

    unsigned int m_uGroup;
    unsigned int m_uOthers;
};

// One entry of an access control list for what has no id; null when there is none.
char* FindEntry(std::string& list, unsigned int tag)
{
    for (std::size_t at = s_uListHead; at + s_uListEntry <= list.size(); at += s_uListEntry)
        if (static_cast<unsigned char>(list[at]) == tag && list[at + 1] == 0)
            return &list[at];
    return nullptr;
}

unsigned int PermissionsOf(const char* entry)
{
    return entry != nullptr ? static_cast<unsigned char>(entry[2]) & 7U : 7U;
}

// Limits what the list says of the group and the others; named users and groups keep what they have.
void Limit(std::string& list, unsigned int owner, bool ownerIsKept, bool groupIsKept)
{
    char* const group = FindEntry(list, s_uTagGroup);
    char* const others = FindEntry(list, s_uTagOthers);
    if (group == nullptr || others == nullptr)
        return;
    const unsigned int effective = PermissionsOf(group) & PermissionsOf(FindEntry(list, s_uTagMask));
    const Limits limits(owner, effective, PermissionsOf(others), ownerIsKept, groupIsKept);
    if (!ownerIsKept || !groupIsKept)
        group[2] = static_cast<char>(limits.m_uGroup);
    others[2] = static_cast<char>(limits.m_uOthers);
}

bool CopyAccessList(std::string& list, unsigned int owner, int to, bool ownerIsKept, bool groupIsKept)
{
    Limit(list, owner, ownerIsKept, groupIsKept);
    return fsetxattr(to, c_strAccessList, list.data(), list.size(), 0) == 0;
}

// The bits that lend the owner's and the group's rights to whoever runs the file.
mode_t SpecialBits(mode_t mode, bool ownerIsKept, bool groupIsKept)
{
    mode_t bits = mode & (S_ISUID | S_ISGID | S_ISVTX);
    if (!ownerIsKept)
        bits &= ~static_cast<mode_t>(S_ISUID);
    return groupIsKept ? bits : bits & ~static_cast<mode_t>(S_ISGID);
}

} // namespace

bool RemoveAccessList(int file)
{
    return fgetxattr(file, c_strAccessList, nullptr, 0) < 0 || fremovexattr(file, c_strAccessList) == 0;
}

bool CopyRights(int from, const struct stat& status, int to)
{
    struct stat now = {};
    if (!CopyAttributes(from, to) || !CopyOwner(status, to, now))
        return false;
    const bool ownerIsKept = now.st_uid == status.st_uid;
    const bool groupIsKept = now.st_gid == status.st_gid;
    const unsigned int owner = status.st_mode >> 6 & 7;
    const Limits limits(owner, status.st_mode >> 3 & 7, status.st_mode & 7, ownerIsKept, groupIsKept);
    mode_t mode = (status.st_mode & s_uOwner) | limits.m_uGroup << 3 | limits.m_uOthers;
    std::string list;
    const Answer answer = ReadAttribute(from, c_strAccessList, list);
    if (answer == Answer::Found && CopyAccessList(list, owner, to, ownerIsKept, groupIsKept))
    {
        // The list has set the permissions.
        if (fstat(to, &now) != 0)
            return false;
        mode = now.st_mode & s_uPermissions;
    }
    else if (!RemoveAccessList(to))
        return false;
    else if (answer != Answer::Missing)
        mode &= s_uOwner;
    return fchmod(to, mode | SpecialBits(status.st_mode, ownerIsKept, groupIsKept)) == 0;
}

} // namespace Toolkit

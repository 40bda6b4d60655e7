#pragma once

#include <optional>
#include <string>

namespace vostel {

// Whether the path is a folder of this user alone: a real one and no symbolic link to one, owned by
// the effective user, with no right for group and others. What nobody else can have put there or
// can change may be trusted. False for a path that is not absolute.
bool isPrivateFolder(const std::string& path);

// `path` when it is private, made when it is missing; else a new private folder beside it, whose
// name begins with `path`. Nothing when no folder can be made. Blocks for a moment.
std::optional<std::string> makePrivateFolder(const std::string& path);

}  // namespace vostel

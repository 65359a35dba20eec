// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What a disk may hold when the power goes after some of a recorded row of changes.
//
// The disk is that of a journalling file system which promises no more than POSIX does:
//   - What a file was given (bytes, size, mode) is sure once the file was synced. Until then every
//     single change may be there or not, in any combination. Of a write there may be any eighths
//     from its beginning; where it makes the file longer, the new length may be there with zeros in
//     the place of the rest.
//   - A name that came, went or changed its file is sure once its directory was synced. Until then
//     every single change of a name may be there or not, whatever became of the content: a name may
//     be there before the bytes of its file, and a later change without an earlier one.
//   - One rename is all there or not at all.
// Files are looked at one by one, so each is taken in all its shapes while the others have their
// last one: writers that never sync would otherwise fill the memory with combinations.
// The orders that real file systems keep (names in the order of the calls; content before the
// rename over an old file) are among these, and so are those of an ordered disk.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "support/disk_operation.h"

namespace zelkora::test {

struct DiskFile {
  std::string content = {};
  size_t mode = 0;

  auto operator<=>(const DiskFile&) const = default;
};

// The files there are, by name.
using DiskState = std::map<std::string, DiskFile>;

// The disk that was in the first state, and saw these changes.
std::set<DiskState> possible_states(const DiskState& before,
                                    std::span<const DiskOperation> operations);

}  // namespace zelkora::test

// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "crash_disk.h"

#include <algorithm>
#include <filesystem>
#include <functional>

namespace zelkora::test {
namespace {

using Kind = DiskOperation::Kind;
using FileId = size_t;
using Names = std::map<std::string, FileId>;

constexpr size_t kPieces = 8;           // that a write is cut into
constexpr size_t kMostFreeChanges = 8;  // of names, beyond which not every combination is taken

struct NameChange {
  Kind kind;
  std::string name;    // that comes, goes, or is given up by a rename
  std::string target;  // kRename: the name instead
  FileId file;
};

// A file: what is sure, and what was changed since.
struct Inode {
  DiskFile sure;
  std::vector<DiskOperation> pending = {};
};

void apply(Names& names, const NameChange& change) {
  if (change.kind != Kind::kCreate) names.erase(change.name);
  if (change.kind == Kind::kCreate) names[change.name] = change.file;
  if (change.kind == Kind::kRename) names[change.target] = change.file;
}

// The first `count` bytes of a write, into a file that has at least `size` bytes then.
DiskFile written(DiskFile file, const DiskOperation& write, size_t count, size_t size) {
  file.content.resize(std::max({file.content.size(), write.number + count, size}), '\0');
  file.content.replace(write.number, count, write.bytes, 0, count);
  return file;
}

DiskFile changed(DiskFile file, const DiskOperation& change) {
  if (change.kind == Kind::kWrite) return written(std::move(file), change, change.bytes.size(), 0);
  if (change.kind == Kind::kResize) file.content.resize(change.number, '\0');
  if (change.kind == Kind::kMode) file.mode = change.number;
  return file;
}

// What a file may be once a change was made that is not sure yet.
std::set<DiskFile> outcomes(const DiskFile& file, const DiskOperation& change) {
  std::set<DiskFile> files = {file, changed(file, change)};
  if (change.kind != Kind::kWrite) return files;
  const size_t end = change.number + change.bytes.size();
  for (size_t piece = 0; piece < kPieces; ++piece) {
    const size_t count = change.bytes.size() * piece / kPieces;
    files.insert({written(file, change, count, 0), written(file, change, count, end)});
  }
  return files;
}

std::set<DiskFile> possible_files(const Inode& inode) {
  std::set<DiskFile> files = {inode.sure};
  for (const DiskOperation& change : inode.pending) {
    std::set<DiskFile> next;
    for (const DiskFile& file : files) next.merge(outcomes(file, change));
    files = std::move(next);
  }
  return files;
}

DiskFile last_shape(const Inode& inode) {
  DiskFile file = inode.sure;
  for (const DiskOperation& change : inode.pending) file = changed(file, change);
  return file;
}

// Which of so many changes are there, as bits: all combinations; of a longer row, those that miss
// its end or a single change.
std::vector<size_t> combinations(size_t changes) {
  std::vector<size_t> all;
  const size_t every = (size_t{1} << changes) - 1;
  if (changes <= kMostFreeChanges) {
    for (size_t kept = 0; kept <= every; ++kept) all.push_back(kept);
    return all;
  }
  for (size_t i = 0; i < changes; ++i) {
    all.push_back((size_t{1} << i) - 1);
    all.push_back(every & ~(size_t{1} << i));
  }
  all.push_back(every);
  return all;
}

class Disk {
 public:
  explicit Disk(const DiskState& before) {
    for (const auto& [name, file] : before) {
      sure_names_[name] = inodes_.size();
      inodes_.push_back({file});
    }
    names_ = sure_names_;
  }

  void see(const DiskOperation& operation) {
    switch (operation.kind) {
      case Kind::kCreate:
        inodes_.push_back({DiskFile{"", operation.number}});
        change_name({Kind::kCreate, operation.path, "", inodes_.size() - 1});
        break;
      case Kind::kRename:
      case Kind::kRemove:
        change_name({operation.kind, operation.path, operation.target, names_.at(operation.path)});
        break;
      case Kind::kSync:
        sync(operation.path);
        break;
      default:
        inodes_[names_.at(operation.path)].pending.push_back(operation);
    }
  }

  std::set<DiskState> states() const {
    std::set<DiskState> all;
    for (const size_t kept : combinations(pending_names_.size())) {
      Names names = sure_names_;
      for (size_t i = 0; i < pending_names_.size(); ++i) {
        if ((kept >> i & 1) != 0) apply(names, pending_names_[i]);
      }
      all.merge(states_with(names));
    }
    return all;
  }

 private:
  void change_name(const NameChange& change) {
    apply(names_, change);
    pending_names_.push_back(change);
  }

  void sync(const std::string& path) {
    if (const auto found = names_.find(path); found != names_.end()) {
      Inode& inode = inodes_[found->second];
      inode.sure = last_shape(inode);
      inode.pending.clear();
      return;
    }
    std::erase_if(pending_names_, [&](const NameChange& change) {
      const bool here = std::filesystem::path(change.name).parent_path() == path;
      if (here) apply(sure_names_, change);
      return here;
    });
  }

  // Every file in every shape, while the others are as their last changes made them.
  std::set<DiskState> states_with(const Names& names) const {
    DiskState last;
    for (const auto& [name, file] : names) last[name] = last_shape(inodes_[file]);
    std::set<DiskState> states = {last};
    for (const auto& [name, file] : names) {
      for (const DiskFile& shape : possible_files(inodes_[file])) {
        DiskState state = last;
        state[name] = shape;
        states.insert(std::move(state));
      }
    }
    return states;
  }

  std::vector<Inode> inodes_;
  Names names_;       // as the calls see them
  Names sure_names_;  // as they are after the power went, whatever else is lost
  std::vector<NameChange> pending_names_;
};

}  // namespace

std::set<DiskState> possible_states(const DiskState& before,
                                    std::span<const DiskOperation> operations) {
  Disk disk(before);
  for (const DiskOperation& operation : operations) disk.see(operation);
  return disk.states();
}

}  // namespace zelkora::test

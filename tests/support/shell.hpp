// The POSIX shell, for peers that are programs.
#pragma once

#include <string>

namespace tlx_test {

/// A new folder for a test's files.
std::string make_temporary_folder();

/// Runs a command line in a folder and takes what it prints to either stream. Returns the exit status, -1
/// when there is no shell. A Windows program has none but under Wine: there it is the shell of Wine's host,
/// and the paths of the host's files that a Windows program sees, "Z:/...", may stand in the command.
int run_shell(const std::string &folder, const std::string &command, std::string &output);

}  // namespace tlx_test

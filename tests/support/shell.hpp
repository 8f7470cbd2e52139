// Runs programs, and peers in a POSIX shell.
#pragma once

#include <string>
#include <vector>

namespace tlx_test {

/// A new folder for a test's files.
std::string make_temporary_folder();

/// Runs a program, the first of the arguments, and waits for its end. Its input is empty; its output and
/// errors go to files. Returns the exit status, -1 when it did not end by itself. A program that cannot
/// start fails the test.
int run_program(const std::vector<std::string> &arguments, const std::string &output,
                const std::string &errors);

/// Runs a command line in a folder and collects its output on either stream. Returns the exit status, -1
/// when there is no shell. A Windows program has a shell only under Wine: that of Wine's host. The command
/// may then name the host's files by the paths that a Windows program sees, "Z:/...".
int run_shell(const std::string &folder, const std::string &command, std::string &output);

}  // namespace tlx_test

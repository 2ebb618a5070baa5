#pragma once

#include <string>
#include <string_view>
#include <vector>

// The process's standard streams and command line, which differ between
// systems: Windows hands programs a UTF-16 command line and translates line
// ends on text streams.

enum class NStandardStream { kOutput, kError };

// Writes the bytes exactly as given (no line-end translation).
bool NWriteStandard(NStandardStream stream, std::string_view bytes);

// True when the stream is an interactive terminal.
bool NIsTerminal(NStandardStream stream);

// Reads one line of standard input as UTF-8, without its line end; false
// at the end of the input with nothing read. With `echo` false and a
// terminal on standard input, what is typed is not shown (a passphrase).
bool NReadStandardLine(std::string* line, bool echo);

// The program's arguments, argv[0] included, as UTF-8.
std::vector<std::string> NCommandLineArguments(int argc, char** argv);

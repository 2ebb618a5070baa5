#include "platform/posix/NSystemMessageTable.h"

#include <algorithm>

namespace {

// Sorted by code; the tests check it.
constexpr NSystemMessageEntry kWin32Messages[] = {
    {0, u"The operation completed successfully.\r\n"},
    {1, u"Incorrect function.\r\n"},
    {2, u"The system cannot find the file specified.\r\n"},
    {3, u"The system cannot find the path specified.\r\n"},
    {4, u"The system cannot open the file.\r\n"},
    {5, u"Access is denied.\r\n"},
    {6, u"The handle is invalid.\r\n"},
    {8, u"Not enough memory resources are available to process this command.\r\n"},
    {13, u"The data is invalid.\r\n"},
    {14, u"Not enough memory resources are available to complete this operation.\r\n"},
    {15, u"The system cannot find the drive specified.\r\n"},
    {16, u"The directory cannot be removed.\r\n"},
    {17, u"The system cannot move the file to a different disk drive.\r\n"},
    {18, u"There are no more files.\r\n"},
    {19, u"The media is write protected.\r\n"},
    {20, u"The system cannot find the device specified.\r\n"},
    {21, u"The device is not ready.\r\n"},
    {22, u"The device does not recognize the command.\r\n"},
    {23, u"Data error (cyclic redundancy check).\r\n"},
    {24, u"The program issued a command but the command length is incorrect.\r\n"},
    {25, u"The drive cannot locate a specific area or track on the disk.\r\n"},
    {29, u"The system cannot write to the specified device.\r\n"},
    {30, u"The system cannot read from the specified device.\r\n"},
    {31, u"A device attached to the system is not functioning.\r\n"},
    {32, u"The process cannot access the file because it is being used by another process.\r\n"},
    {33, u"The process cannot access the file because another process has locked a portion of the file.\r\n"},
    {36, u"Too many files opened for sharing.\r\n"},
    {38, u"Reached the end of the file.\r\n"},
    {39, u"The disk is full.\r\n"},
    {50, u"The request is not supported.\r\n"},
    {53, u"The network path was not found.\r\n"},
    {59, u"An unexpected network error occurred.\r\n"},
    {64, u"The specified network name is no longer available.\r\n"},
    {65, u"Network access is denied.\r\n"},
    {67, u"The network name cannot be found.\r\n"},
    {80, u"The file exists.\r\n"},
    {82, u"The directory or file cannot be created.\r\n"},
    {87, u"The parameter is incorrect.\r\n"},
    {89, u"The system cannot start another process at this time.\r\n"},
    {109, u"The pipe has been ended.\r\n"},
    {110, u"The system cannot open the device or file specified.\r\n"},
    {111, u"The file name is too long.\r\n"},
    {112, u"There is not enough space on the disk.\r\n"},
    {120, u"This function is not supported on this system.\r\n"},
    {122, u"The data area passed to a system call is too small.\r\n"},
    {123, u"The filename, directory name, or volume label syntax is incorrect.\r\n"},
    {132, u"The file pointer cannot be set on the specified device or file.\r\n"},
    {145, u"The directory is not empty.\r\n"},
    {170, u"The requested resource is in use.\r\n"},
    {183, u"Cannot create a file when that file already exists.\r\n"},
    {206, u"The filename or extension is too long.\r\n"},
    {223, u"The file size exceeds the limit allowed and cannot be saved.\r\n"},
    {232, u"The pipe is being closed.\r\n"},
    {234, u"More data is available.\r\n"},
    {258, u"The wait operation timed out.\r\n"},
    {259, u"No more data is available.\r\n"},
    {267, u"The directory name is invalid.\r\n"},
    {534, u"Arithmetic result exceeded 32 bits.\r\n"},
    {995, u"The I/O operation has been aborted because of either a thread exit or an application request.\r\n"},
    {998, u"Invalid access to memory location.\r\n"},
    {1004, u"Invalid flags.\r\n"},
    {1006, u"The volume for a file has been externally altered so that the opened file is no longer valid.\r\n"},
    {1060, u"The specified service does not exist as an installed service.\r\n"},
    {1062, u"The service has not been started.\r\n"},
    {1113, u"No mapping for the Unicode character exists in the target multi-byte code page.\r\n"},
    {1117, u"The request could not be performed because of an I/O device error.\r\n"},
    {1131, u"A potential deadlock condition has been detected.\r\n"},
    {1142, u"An attempt was made to create more links on a file than the file system supports.\r\n"},
    {1168, u"Element not found.\r\n"},
    {1223, u"The operation was canceled by the user.\r\n"},
    {1314, u"A required privilege is not held by the client.\r\n"},
    {1326, u"The user name or password is incorrect.\r\n"},
    {1359, u"An internal error occurred.\r\n"},
    {1392, u"The file or directory is corrupted and unreadable.\r\n"},
    {1460, u"This operation returned because the timeout period expired.\r\n"},
    {1921, u"The name of the file cannot be resolved by the system.\r\n"},
};

// NTDLL's table: a {Caption} heads its own line, and insertions are
// printf-style (%hs, %p), not %1.
constexpr NSystemMessageEntry kNtStatusMessages[] = {
    {0x80000005, u"{Buffer Overflow}\r\nThe data was too large to fit into the specified buffer.\r\n"},
    {0xC0000001, u"{Operation Failed}\r\nThe requested operation was unsuccessful.\r\n"},
    {0xC0000004,
     u"The specified information record length does not match the length required for the specified information "
     u"class.\r\n"},
    {0xC0000005, u"The instruction at 0x%p referenced memory at 0x%p. The memory could not be %s.\r\n"},
    {0xC0000008, u"An invalid HANDLE was specified.\r\n"},
    {0xC000000D, u"An invalid parameter was passed to a service or function.\r\n"},
    {0xC000000E, u"A device which does not exist was specified.\r\n"},
    {0xC000000F, u"{File Not Found}\r\nThe file %hs does not exist.\r\n"},
    {0xC0000010, u"The specified request is not a valid operation for the target device.\r\n"},
    {0xC0000011,
     u"The end-of-file marker has been reached. There is no valid data in the file beyond this marker.\r\n"},
    {0xC0000017,
     u"{Not Enough Quota}\r\nNot enough virtual memory or paging file quota is available to complete the specified "
     u"operation.\r\n"},
    {0xC0000022,
     u"{Access Denied}\r\nA process has requested access to an object, but has not been granted those access "
     u"rights.\r\n"},
    {0xC0000023,
     u"{Buffer Too Small}\r\nThe buffer is too small to contain the entry. No information has been written to the "
     u"buffer.\r\n"},
    {0xC0000033, u"Object Name invalid.\r\n"},
    {0xC0000034, u"Object Name not found.\r\n"},
    {0xC0000035, u"Object Name already exists.\r\n"},
    {0xC000003A, u"{Path Not Found}\r\nThe path %hs does not exist.\r\n"},
    {0xC000003B, u"Object Path Component was not a directory object.\r\n"},
    {0xC0000043, u"A file cannot be opened because the share access flags are incompatible.\r\n"},
    {0xC0000054, u"A requested read/write cannot be granted due to a conflicting file lock.\r\n"},
    {0xC0000055, u"A requested file lock cannot be granted due to other existing locks.\r\n"},
    {0xC0000056, u"A non close operation has been requested of a file object with a delete pending.\r\n"},
    {0xC0000061, u"A required privilege is not held by the client.\r\n"},
    {0xC000007F, u"An operation failed because the disk was full.\r\n"},
    {0xC0000094, u"{EXCEPTION}\r\nInteger division by zero.\r\n"},
    {0xC000009A, u"Insufficient system resources exist to complete the API.\r\n"},
    {0xC00000BA,
     u"The file that was specified as a target is a directory, and the caller specified that it could be anything "
     u"but a directory.\r\n"},
    {0xC00000BB, u"The request is not supported.\r\n"},
    {0xC00000FD, u"A new guard page for the stack cannot be created.\r\n"},
    {0xC0000101, u"Indicates that the directory trying to be deleted is not empty.\r\n"},
    {0xC0000103, u"A requested opened file is not a directory.\r\n"},
    {0xC0000120, u"The I/O request was canceled.\r\n"},
    {0xC0000185, u"The I/O device reported an I/O error.\r\n"},
};

bool Find(std::span<const NSystemMessageEntry> table, std::uint32_t code, std::u16string_view* text) {
  const auto it = std::lower_bound(table.begin(), table.end(), code,
                                   [](const NSystemMessageEntry& entry, std::uint32_t c) { return entry.code < c; });
  if (it == table.end() || it->code != code) return false;
  *text = it->text;
  return true;
}

}  // namespace

bool NFindWin32Message(std::uint32_t code, std::u16string_view* text) {
  return Find(kWin32Messages, code, text);
}

bool NFindNtStatusMessage(std::uint32_t code, std::u16string_view* text) {
  return Find(kNtStatusMessages, code, text);
}

std::span<const NSystemMessageEntry> NWin32MessageEntries() {
  return kWin32Messages;
}

std::span<const NSystemMessageEntry> NNtStatusMessageEntries() {
  return kNtStatusMessages;
}

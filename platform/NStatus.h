#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The result of one platform operation: ok, or a Win32 error code together
// with the operation and the path it concerned. Win32 codes are used on every
// platform so that reports read the same everywhere; the POSIX layer maps
// errno onto them. Cheap to return: the success value holds no path.
class [[nodiscard]] NStatus {
 public:
  // Win32 codes the layers above test for by name.
  static constexpr std::uint32_t kFileNotFound = 2;      // ERROR_FILE_NOT_FOUND
  static constexpr std::uint32_t kPathNotFound = 3;      // ERROR_PATH_NOT_FOUND
  static constexpr std::uint32_t kAccessDenied = 5;      // ERROR_ACCESS_DENIED
  static constexpr std::uint32_t kInvalidHandle = 6;     // ERROR_INVALID_HANDLE
  static constexpr std::uint32_t kNotEnoughMemory = 8;   // ERROR_NOT_ENOUGH_MEMORY
  static constexpr std::uint32_t kSharingViolation = 32; // ERROR_SHARING_VIOLATION
  static constexpr std::uint32_t kLockViolation = 33;    // ERROR_LOCK_VIOLATION
  static constexpr std::uint32_t kFileExists = 80;       // ERROR_FILE_EXISTS
  static constexpr std::uint32_t kInvalidParameter = 87; // ERROR_INVALID_PARAMETER
  static constexpr std::uint32_t kDiskFull = 112;        // ERROR_DISK_FULL
  static constexpr std::uint32_t kDirNotEmpty = 145;     // ERROR_DIR_NOT_EMPTY
  static constexpr std::uint32_t kAlreadyExists = 183;   // ERROR_ALREADY_EXISTS
  static constexpr std::uint32_t kFilenameTooLong = 206; // ERROR_FILENAME_EXCED_RANGE
  static constexpr std::uint32_t kWaitTimeout = 258;     // WAIT_TIMEOUT
  static constexpr std::uint32_t kDirectory = 267;       // ERROR_DIRECTORY
  static constexpr std::uint32_t kCantResolveFilename = 1921;  // ERROR_CANT_RESOLVE_FILENAME

  NStatus() = default;
  static NStatus Ok() { return NStatus(); }
  static NStatus Error(std::uint32_t code, std::string_view operation, std::u16string_view path = {}) {
    return NStatus(code, operation, path);
  }

  bool IsOk() const noexcept { return m_code == 0; }
  explicit operator bool() const noexcept { return IsOk(); }

  // The missing file or folder that "does not exist" covers.
  bool IsNotFound() const noexcept { return m_code == kFileNotFound || m_code == kPathNotFound; }

  std::uint32_t Code() const noexcept { return m_code; }
  const std::string& Operation() const noexcept { return m_operation; }
  const std::u16string& Path() const noexcept { return m_path; }

 private:
  NStatus(std::uint32_t code, std::string_view operation, std::u16string_view path)
      : m_code(code), m_operation(operation), m_path(path) {}

  std::uint32_t m_code = 0;
  std::string m_operation;
  std::u16string m_path;
};

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string_view>
#include <system_error>

#include "bench/NConfigFolderGenerator.h"

namespace {

constexpr const char kUsage[] = "usage: cfgdeck-genconfig ROOT [--sessions N] [--seed S] [--fanout F] [--depth D]\n";

template <typename T>
bool ParseNumber(std::string_view text, T* value) {
  const char* end = text.data() + text.size();
  const auto [next, error] = std::from_chars(text.data(), end, *value);
  return error == std::errc() && next == end;
}

bool ParseArguments(int argc, char** argv, NConfigFolderSpec* settings) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    const bool hasValue = i + 1 < argc;
    bool parsed = true;
    if (argument == "--sessions" && hasValue) {
      parsed = ParseNumber(argv[++i], &settings->sessions) && settings->sessions >= 0;
    } else if (argument == "--seed" && hasValue) {
      parsed = ParseNumber(argv[++i], &settings->seed);
    } else if (argument == "--fanout" && hasValue) {
      parsed = ParseNumber(argv[++i], &settings->fanout) && settings->fanout >= 1;
    } else if (argument == "--depth" && hasValue) {
      parsed = ParseNumber(argv[++i], &settings->depth) && settings->depth >= 0;
    } else if (argument.starts_with("--") || !settings->root.empty()) {
      parsed = false;
    } else {
      settings->root = argument;
    }
    if (!parsed) {
      std::fprintf(stderr, "cfgdeck-genconfig: bad argument \"%s\"\n", argv[i]);
      return false;
    }
  }
  return !settings->root.empty();
}

}  // namespace

int main(int argc, char** argv) {
  NConfigFolderSpec settings;
  if (!ParseArguments(argc, argv, &settings)) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  try {
    const NConfigFolderStats stats = NGenerateConfigFolder(settings);
    const double megabytes = static_cast<double>(stats.totalBytes) / 1e6;
    const double mebibytes = static_cast<double>(stats.totalBytes) / (1024.0 * 1024.0);
    std::printf("root:          %s\n", settings.root.c_str());
    std::printf("sessions:      %d\n", stats.sessions);
    std::printf("folders:       %llu\n", static_cast<unsigned long long>(stats.folders));
    std::printf("files:         %llu\n", static_cast<unsigned long long>(stats.filesWritten));
    std::printf("bytes:         %llu (%.1f MB, %.1f MiB)\n", static_cast<unsigned long long>(stats.totalBytes),
                megabytes, mebibytes);
    std::printf("values:        %llu DWORD, %llu string, %llu binary, %llu multi-string\n",
                static_cast<unsigned long long>(stats.dwordValues), static_cast<unsigned long long>(stats.stringValues),
                static_cast<unsigned long long>(stats.binaryValues),
                static_cast<unsigned long long>(stats.multiStringValues));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "cfgdeck-genconfig: %s\n", error.what());
    return 1;
  }
  return 0;
}

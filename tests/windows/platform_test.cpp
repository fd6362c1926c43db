// The system's side of the library: temporary files, and the message box of a heap that refuses.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/platform.h"
#include "platform/win32/windows_api.h"
#include "props/diagnostics.h"
#include "props/props_heap.h"
#include "storage/file_stream.h"
#include "storage/stream_calls.h"

// Takes the place of the imported function, so that nothing is shown.
#if defined(__i386__)
#define IMPORTED_MESSAGE_BOX "__imp__MessageBoxA@16"
#else
#define IMPORTED_MESSAGE_BOX "__imp_MessageBoxA"
#endif

namespace {

struct Box {
  int shown = 0;
  HWND owner = nullptr;
  std::string text, caption;
  UINT type = 0;
} box;

int WINAPI RecordBox(HWND owner, const char* text, const char* caption, UINT type) {
  box = {box.shown + 1, owner, text, caption, type};
  return IDOK;
}

bool heapRefuses = false;
int failures = 0;

void Check(bool holds, const char* what, int line) {
  if (holds) return;
  std::printf("FAIL line %d: %s\n", line, what);
  ++failures;
}
#define CHECK(condition) Check(condition, #condition, __LINE__)

}  // namespace

extern "C" {
extern int(WINAPI* const importedMessageBox)(HWND, const char*, const char*,
                                             UINT) __asm__(IMPORTED_MESSAGE_BOX);
int(WINAPI* const importedMessageBox)(HWND, const char*, const char*, UINT) = RecordBox;
}

namespace deimg {
namespace platform {

void* HeapAllocate(std::size_t bytes, bool zeroed) noexcept {
  return zeroed ? std::calloc(1, bytes) : std::malloc(bytes);
}

bool HeapRelease(void* allocation) noexcept {
  std::free(allocation);
  SetLastError(ERROR_INVALID_PARAMETER);
  return !heapRefuses;
}

}  // namespace platform

namespace {

std::string SystemText(DWORD error) {
  char text[256] = "";
  FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                 MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), text, sizeof(text), nullptr);
  return text;
}

void RefusedReleaseShowsOneBox() {
  heapRefuses = true;
  const std::uint8_t data[6] = {};
  { const PropsHandle handle(pxfPsPropsProlog(false, data, sizeof(data))); }
  heapRefuses = false;
  CHECK(box.shown == 1);
  CHECK(box.owner == nullptr);
  CHECK(box.caption == "COMPL");
  CHECK(!SystemText(ERROR_INVALID_PARAMETER).empty());
  CHECK(box.text == "ERROR COMPL: HeapFree () failed.\n" + SystemText(ERROR_INVALID_PARAMETER));
  CHECK(box.type == (MB_OK | MB_ICONERROR));

  SetLastError(0x2FFFFFFF);  // a code without a text
  ReportMessage("TAG", 7, "message");
  CHECK(box.shown == 2);
  CHECK(box.text == "TAG: message\n");
  CHECK(box.type == (MB_OK | MB_ICONINFORMATION));
}

/// The only "_dv" file in the temporary directory; empty when there is none.
std::string OnlyWorkFile() {
  char directory[MAX_PATH];
  CHECK(platform::TemporaryDirectory(directory, sizeof(directory)));
  WIN32_FIND_DATAA found;
  const HANDLE search = FindFirstFileA((std::string(directory) + "_dv*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return {};
  FindClose(search);
  return directory + std::string(found.cFileName);
}

void WorkFileIsNobodyElses() {
  FileStream stream;
  CHECK(FileStream::MakeTemporary(stream) == DEIMG_OK);
  const std::string path = OnlyWorkFile();
  CHECK(path.find("\\_dv") != std::string::npos);
  platform::FileHandle other = platform::kInvalidFile;
  CHECK(platform::CreateWorkFile(path.c_str(), other) == platform::CreateOutcome::kNameTaken);
  const std::FILE* const opened = std::fopen(path.c_str(), "r+b");
  CHECK(opened == nullptr);
  CHECK(DeleteFileA(path.c_str()) == FALSE);
  stream.Release();
  CHECK(OnlyWorkFile().empty());
}

}  // namespace
}  // namespace deimg

int main() {
  deimg::RefusedReleaseShowsOneBox();
  deimg::WorkFileIsNobodyElses();
  std::printf("platform: %d failures\n", failures);
  return failures != 0;
}

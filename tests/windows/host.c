/* A host of the library, as an application on Windows is one: it knows the public header only,
   loads the library at run time and develops through streams of its own. It runs the calls of
   cases.tsv in a directory of reference vectors and compares everything that comes back.

   host LIBRARY DIRECTORY

   On 32-bit x86 it is an inconsiderate host: it calls with a stack aligned to 4 bytes only and with
   x87 arithmetic cut to single precision. */
#include <deimg/deimg.h>
#include <float.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

typedef uint32_t (*Develop)(CallerStream*, uint32_t, uint32_t, DevelopParams*, CallerStream*);

enum { kCallback = 1001 };

/* The raw file, on disk. */
typedef struct RawFile {
  char path[MAX_PATH];
  FILE* file;
} RawFile;

static void InOpen(void* cookie, uint16_t mode, uint32_t* error) {
  RawFile* raw = cookie;
  raw->file = mode == DEIMG_OPEN_READ ? fopen(raw->path, "rb") : NULL;
  *error = raw->file != NULL ? 0 : kCallback;
}
static void InClose(void* cookie, uint32_t* error) {
  RawFile* raw = cookie;
  *error = fclose(raw->file) == 0 ? 0 : kCallback;
  raw->file = NULL;
}
static void InRead(void* cookie, void* buffer, uint32_t* count, uint32_t* error) {
  *count = (uint32_t)fread(buffer, 1, *count, ((RawFile*)cookie)->file);
  *error = 0;
}
static void InSeek(void* cookie, uint16_t origin, int32_t offset, uint32_t* error) {
  static const int kOrigins[] = {SEEK_SET, SEEK_SET, SEEK_CUR, SEEK_END};
  *error = fseek(((RawFile*)cookie)->file, offset, kOrigins[origin & 3]) == 0 ? 0 : kCallback;
}
static uint32_t InTell(void* cookie, uint32_t* error) {
  *error = 0;
  return (uint32_t)ftell(((RawFile*)cookie)->file);
}

/* The developed picture, compared with the wanted one while it comes. */
typedef struct Picture {
  FILE* wanted;
  uint32_t lines, lineBytes, wrongLines;
  int opened, closed;
  char progress[512];
} Picture;

static void OutOpen(void* cookie, uint16_t mode, uint32_t* error) {
  ((Picture*)cookie)->opened = mode == DEIMG_OPEN_TRUNCATE;
  *error = 0;
}
static void OutClose(void* cookie, uint32_t* error) {
  ((Picture*)cookie)->closed = 1;
  *error = 0;
}
static void OutWrite(void* cookie, const void* buffer, uint32_t* count, uint32_t* error) {
  static uint8_t wanted[1 << 16];
  Picture* p = cookie;
  ++p->lines;
  p->lineBytes = *count;
  if (p->wanted == NULL || *count > sizeof(wanted) ||
      fread(wanted, 1, *count, p->wanted) != *count || memcmp(buffer, wanted, *count) != 0) {
    ++p->wrongLines;
  }
  *error = 0;
}
static void OutProgress(void* cookie, uint16_t percent, uint32_t* error) {
  char* text = ((Picture*)cookie)->progress;
  const size_t n = strlen(text);
  snprintf(text + n, sizeof(((Picture*)cookie)->progress) - n, n != 0 ? ",%u" : "%u", percent);
  *error = 0;
}

/* Calls with the stack `offset` bytes below a 16-byte boundary, 0 to 12. */
static uint32_t Call(Develop develop, unsigned offset, CallerStream* input, uint32_t flags,
                     uint32_t format, DevelopParams* params, CallerStream* output) {
#if defined(__i386__)
  const uint32_t arguments[] = {(uint32_t)input, flags, format, (uint32_t)params, (uint32_t)output};
  uint32_t result;
  __asm__ volatile(
      "movl %%esp, %%ebx\n\t"
      "andl $-16, %%esp\n\t"
      "subl %[offset], %%esp\n\t"
      "subl $12, %%esp\n\t"
      "pushl 16(%[arguments])\n\t"
      "pushl 12(%[arguments])\n\t"
      "pushl 8(%[arguments])\n\t"
      "pushl 4(%[arguments])\n\t"
      "pushl (%[arguments])\n\t"
      "call *%[develop]\n\t"
      "movl %%ebx, %%esp"
      : "=a"(result)
      : [develop] "0"(develop), [arguments] "S"(arguments), [offset] "D"(offset)
      : "ebx", "ecx", "edx", "memory", "cc");
  return result;
#else
  (void)offset;
  return develop(input, flags, format, params, output);
#endif
}

static FILE* OpenIn(const char* directory, const char* name, const char* suffix) {
  char path[MAX_PATH];
  snprintf(path, sizeof(path), "%s/%s%s", directory, name, suffix);
  return fopen(path, "rb");
}

static int FromHex(const char* text, void* block) {
  unsigned value, i;
  for (i = 0; i < sizeof(DevelopParams) && sscanf(text + 2 * i, "%2x", &value) == 1; ++i) {
    ((uint8_t*)block)[i] = (uint8_t)value;
  }
  return i == sizeof(DevelopParams);
}

/* Runs the case whose twelve fields are given; what is wrong, or null. */
static const char* Run(Develop develop, const char* directory, char* const* field,
                       unsigned offset) {
  static char why[256];
  RawFile raw = {"", NULL};
  Picture picture = {0};
  DevelopParams params, after;
  CallerStream input = {&raw,   0,      0,   DEIMG_PROGRESS_NEVER, InOpen, InClose, InRead, NULL,
                        InSeek, InTell, NULL};
  CallerStream output = {
      &picture, 0,    0,    (uint16_t)atoi(field[4]),           OutOpen, OutClose, NULL,
      OutWrite, NULL, NULL, atoi(field[5]) ? OutProgress : NULL};
  const int withParams = strcmp(field[6], "-") != 0;
  uint32_t result;
  int rest;
  snprintf(raw.path, sizeof(raw.path), "%s/%s", directory, field[1]);
  picture.wanted = OpenIn(directory, field[0], ".out");
  if (withParams && (!FromHex(field[6], &params) || !FromHex(field[11], &after)))
    return "no settings";

  result = Call(develop, offset, &input, (uint32_t)strtoul(field[2], NULL, 16),
                (uint32_t)strtoul(field[3], NULL, 16), withParams ? &params : NULL, &output);

  rest = picture.wanted != NULL ? fgetc(picture.wanted) : EOF;
  if (picture.wanted != NULL) fclose(picture.wanted);
  if (raw.file != NULL) fclose(raw.file);
  snprintf(why, sizeof(why), "result %u, %u lines of %u bytes, %u wrong, progress %s", result,
           picture.lines, picture.lineBytes, picture.wrongLines, picture.progress);
  if (result != strtoul(field[7], NULL, 10) || picture.lines != strtoul(field[8], NULL, 10) ||
      (picture.lines != 0 && picture.lineBytes != strtoul(field[9], NULL, 10)) ||
      picture.wrongLines != 0 || rest != EOF ||
      strcmp(picture.progress[0] != '\0' ? picture.progress : "-", field[10]) != 0) {
    return why;
  }
  if (result == 0 && !(picture.opened && picture.closed)) return "output not opened and closed";
  if (withParams && memcmp(&params, &after, sizeof(params)) != 0) return "settings differ";
  return NULL;
}

/* A crash just ends the host, without a debugger that somebody waits for. */
static LONG WINAPI Crashed(EXCEPTION_POINTERS* what) {
  printf("crashed: %08lX\n", (unsigned long)what->ExceptionRecord->ExceptionCode);
  fflush(stdout);
  TerminateProcess(GetCurrentProcess(), 5);
  return EXCEPTION_EXECUTE_HANDLER;
}

int main(int argc, char** argv) {
  static char line[1 << 12];
  unsigned passed = 0, failed = 0;
  HMODULE library;
  FARPROC function;
  Develop develop;
  FILE* cases;
  if (argc != 3) return fprintf(stderr, "host LIBRARY DIRECTORY\n"), 2;
  SetUnhandledExceptionFilter(Crashed);
  library = LoadLibraryA(argv[1]);
  function = library != NULL ? GetProcAddress(library, "DEImg_DevelopM480") : NULL;
  if (function == NULL) return fprintf(stderr, "%s: not the library\n", argv[1]), 2;
  memcpy(&develop, &function, sizeof(develop));
  cases = OpenIn(argv[2], "cases.tsv", "");
  if (cases == NULL) return fprintf(stderr, "%s: no vectors\n", argv[2]), 2;
#if defined(__i386__)
  _controlfp(_PC_24, _MCW_PC);
#endif
  while (fgets(line, sizeof(line), cases) != NULL) {
    char* field[12];
    const char* why;
    int n = 0;
    for (char* p = strtok(line, "\t\r\n"); p != NULL && n < 12; p = strtok(NULL, "\t\r\n")) {
      field[n++] = p;
    }
    if (n != 12) continue;
    why = Run(develop, argv[2], field, 4 * ((passed + failed) % 4));
    if (why != NULL) printf("FAIL %s: %s\n", field[0], why);
    *(why == NULL ? &passed : &failed) += 1;
  }
  printf("vectors: %u passed, %u failed\n", passed, failed);
  FreeLibrary(library);
  return failed != 0 || passed == 0;
}

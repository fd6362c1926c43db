/* A host in C: c_host RAW writes the developed picture as PPM to standard output.
 * It lays out the two structures byte by byte, as a host in any language may, so that it works only
 * with a library that keeps to the published layout. */
#include <deimg/deimg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define COUNT(array) (sizeof(array) / sizeof((array)[0]))

/* Offsets in DevelopParams and CallerStream; pointers are as wide as the machine has them. */
enum { kParamsBytes = 288, kFilled = 2, kFirstLevel = 8, kLastLevel = 14, kWbPreset = 44 };
enum { kGainsSet = 56, kGains = 62 };
#define POINTERS(n) (sizeof(void*) == 4 ? 8 + 4 * (n) : 16 + 8 * (n))
#define PROGRESS_MODE (sizeof(void*) + 2)

typedef struct Lines {
  unsigned char* bytes;
  size_t size, capacity, lines;
  int opened, closed, reports;
} Lines;

static void RawOpen(void* file, uint16_t mode, uint32_t* error) {
  rewind(file);
  *error = mode == 1 ? 0 : 5000;
}
static void RawClose(void* file, uint32_t* error) {
  (void)file;
  *error = 0;
}
static void RawRead(void* file, void* buffer, uint32_t* count, uint32_t* error) {
  *count = (uint32_t)fread(buffer, 1, *count, file);
  *error = ferror((FILE*)file) ? 5001 : 0;
}
static void RawSeek(void* file, uint16_t origin, int32_t offset, uint32_t* error) {
  const int origins[] = {0, SEEK_SET, SEEK_CUR, SEEK_END};
  *error = fseek(file, offset, origins[origin]) == 0 ? 0 : 5002;
}
static uint32_t RawTell(void* file, uint32_t* error) {
  *error = 0;
  return (uint32_t)ftell(file);
}
static void LinesOpen(void* cookie, uint16_t mode, uint32_t* error) {
  ((Lines*)cookie)->opened = mode;
  *error = 0;
}
static void LinesClose(void* cookie, uint32_t* error) {
  ((Lines*)cookie)->closed = 1;
  *error = 0;
}
static void LinesWrite(void* cookie, const void* buffer, uint32_t* count, uint32_t* error) {
  Lines* lines = cookie;
  if (lines->size + *count > lines->capacity) {
    lines->capacity = 2 * (lines->size + *count);
    lines->bytes = realloc(lines->bytes, lines->capacity);
  }
  memcpy(lines->bytes + lines->size, buffer, *count);
  lines->size += *count;
  ++lines->lines;
  *error = 0;
}
static void LinesProgress(void* cookie, uint16_t percent, uint32_t* error) {
  (void)percent;
  ++((Lines*)cookie)->reports;
  *error = 0;
}

typedef void (*Operation)(void);

static void Store(unsigned char* stream, void* cookie, const Operation* operations, size_t count) {
  memcpy(stream, &cookie, sizeof cookie);
  for (size_t i = 0; i < count; ++i) {
    memcpy(stream + POINTERS(i), &operations[i], sizeof operations[i]);
  }
}

static int Fail(const char* message, unsigned code) {
  fprintf(stderr, "c_host: %s (%u)\n", message, code);
  return 1;
}

int main(int argc, char** argv) {
  FILE* raw = argc == 2 ? fopen(argv[1], "rb") : NULL;
  if (!raw) return Fail("usage: c_host RAW", 0);
  Lines lines = {0};
  const Operation input[] = {(Operation)RawOpen,
                             (Operation)RawClose,
                             (Operation)RawRead,
                             NULL,
                             (Operation)RawSeek,
                             (Operation)RawTell,
                             NULL};
  const Operation output[] = {
      (Operation)LinesOpen,    (Operation)LinesClose, NULL, (Operation)LinesWrite, NULL, NULL,
      (Operation)LinesProgress};
  union {
    CallerStream stream;
    unsigned char bytes[sizeof(CallerStream)];
  } in = {0}, out = {0};
  Store(in.bytes, raw, input, COUNT(input));
  Store(out.bytes, &lines, output, COUNT(output));
  out.bytes[PROGRESS_MODE] = DEIMG_PROGRESS_FINAL;

  union {
    DevelopParams params;
    unsigned char bytes[kParamsBytes];
  } settings;
  if (sizeof settings != kParamsBytes) return Fail("DevelopParams has another size", 0);
  memset(&settings, 0xEE, sizeof settings); /* what the library must not read */
  memset(settings.bytes, 0, kFirstLevel);
  settings.bytes[kFilled] = 1;
  const int16_t recorded = DEIMG_AS_RECORDED;
  for (int at = kFirstLevel; at <= kLastLevel; at += 2) memcpy(settings.bytes + at, &recorded, 2);
  memset(settings.bytes + kLastLevel + 2, 0, 4); /* median on, no exposure adjustment */
  memcpy(settings.bytes + kWbPreset, &recorded, 2);

  const uint32_t code = DEImg_DevelopM480(&in.stream, 0, 4, &settings.params, &out.stream);
  if (code != 0) return Fail("the job failed", code);
  if (lines.opened != 3 || !lines.closed) return Fail("the output was not opened and closed", 0);
  if (lines.reports != 1) return Fail("not exactly one progress report", (unsigned)lines.reports);
  uint32_t green;
  memcpy(&green, settings.bytes + kGains + 4, sizeof green);
  if (settings.bytes[kGainsSet] != 1 || green != 1024) return Fail("gains not handed back", green);

  printf("P6\n%zu %zu\n255\n", lines.size / lines.lines / 3, lines.lines);
  fwrite(lines.bytes, 1, lines.size, stdout);
  free(lines.bytes);
  fclose(raw);
  return 0;
}

/* A host linked with the import library: the function is found, and answers. */
#include <deimg/deimg.h>

int main(void) {
  return DEImg_DevelopM480(NULL, DEIMG_JOB_FULL, DEIMG_FORMAT_8BIT, NULL, NULL) != DEIMG_MISSING;
}

/// The namespace of the instruction level that a "-inl.h" file is compiled for. Each level's source
/// defines it before anything else, see pipeline/levels.h; read by itself, such a file belongs to
/// the level that every machine has.
#ifndef DEIMG_BASE_LEVEL_H
#define DEIMG_BASE_LEVEL_H

#ifndef DEIMG_LEVEL
#define DEIMG_LEVEL baseline
#endif

#endif  // DEIMG_BASE_LEVEL_H

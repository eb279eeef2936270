/* Reading a file whole.
 *
 * A volume is read strictly by default: the next record must carry the next number, and the first
 * fault ends the run.  Whole reading goes to the last byte of every file, hands out everything that
 * is readable, and tells what it passed over and what it could not take at its word.  It never
 * fails on content and never guesses a value.
 *
 *     SDBlkVol *vol = sdblk_open_whole("old.seed", 0, NULL);
 *     if (vol == NULL) elog_die(0, "old.seed cannot be opened.\n");
 *     SDBlk *blk = NULL;
 *     int r;
 *     while ((r = sdblk_parseblk(vol, &blk)) >= 0 && r != SDBLK_EOF) {
 *       if (sdblk_unstuffblk(blk) < 0) break;
 *       sdblk_printblk(blk, "", 1);
 *     }
 *
 * The loop is that of strict reading; a result below 0 means that memory ran out, and nothing else.
 * What differs in the blocks:
 *
 *     logical_sequence  the number of the record in which the block starts, or -1 without one
 *     blockette_length  control: the length field; of one that is cut, blockette_raw has zeros in
 *                       the place of the missing bytes, and sdblk_raw tells how many are there;
 *                       data record: the record's length; data blockette: the bytes from its start
 *                       to the next one of the chain, or to the record's end
 *     file_offset       of data blockettes, too, from the start of the volume
 *     contents          groups and arrays hold as many elements as have at least one byte
 *     SDBlkEntry.definition
 *                       -1 for a number or time that is there but blank or unreadable: it has no
 *                       value (sdblk_has_value).  sdblk_getv then gives 0 for an integer, a NaN for
 *                       a real number and SDBLK_NO_TIME for a time.  An element of an array of real
 *                       numbers without a value is a NaN, the code of a reference without one is
 *                       SDBLK_NO_CODE
 *     SDBlkEntry.value.i
 *                       of the format "ULONG", the 32 bits of an unsigned number; see sdblk_integer
 */
#ifndef TARVIK_SEED_WHOLE_H_
#define TARVIK_SEED_WHOLE_H_

#include <stddef.h>
#include <stdint.h>

#include "../seed/sdblk.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Why bytes were passed over (skips), and what could not be taken at its word (notes). */
typedef enum SDBlkCause {
  SDBLK_SKIP_PADDING,     /* between records: nothing but digits, blanks, NULs, CRs and LFs */
  SDBLK_SKIP_GARBAGE,     /* between records: anything else */
  SDBLK_SKIP_PREFIX,      /* the rest of a control record where no blockette begins */
  SDBLK_NOTE_LENGTH,      /* a record is not as long as it states */
  SDBLK_NOTE_UNCONFIRMED, /* nothing confirms where a record ends */
  SDBLK_NOTE_CUT,         /* a data record or a blockette is cut short */
  SDBLK_NOTE_ORDER,       /* the byte order of a data record cannot be deduced */
  SDBLK_NOTE_CHAIN,       /* the chain of data blockettes leads nowhere */
  SDBLK_NOTE_VALUE,       /* a field has no readable value */
  SDBLK_NOTE_SHORT,       /* a group or an array has fewer elements than its count says */
  SDBLK_NOTE_AGAIN        /* a lookup code is defined again */
} SDBlkCause;
#define SDBLK_CAUSES 11

/* "padding", "garbage", "prefix", "length", ...; a constant, "" for anything else. */
SDBLK_API const char *sdblk_cause_name(SDBlkCause cause);

/* One skip or note.  What it points to lives until the report returns. */
typedef struct SDBlkFinding {
  SDBlkCause cause;
  int64_t offset;    /* skip: its first byte; note: its block, or its record where block is -1;
                        from the start of the volume */
  int64_t length;    /* skip: its bytes; note: 0 */
  int64_t block;     /* note: the number of its block, from 0; -1 for a skip or a record's note */
  const char *field; /* notes value and short: the field's path, such as "stages[2].resps" or
                        "blockettes[1].time" in the second blockette of a chain; else NULL */
  const char *text;  /* a sentence for people */
} SDBlkFinding;

/* Takes findings as they are met.  Those that sdblk_parseblk reports stand before the block that it
 * hands out next, those of sdblk_unstuffblk are notes on the block that it decodes.  The report
 * must not read on in the volume. */
typedef void (*SDBlkReport)(void *context, const SDBlkFinding *finding);

/* What is kept of abbreviation blockettes (30 to 48). */
typedef enum SDBlkKeep {
  SDBLK_KEEP_FIRST,   /* a copy of the first that defines each code, for references to it, and the
                         block numbers of all */
  SDBLK_KEEP_NUMBERS, /* only the block number of the first: references lead to no block, and memory
                         does not grow with what is defined again */
  SDBLK_KEEP_ALL      /* a copy of each, also of those that define a code again */
} SDBlkKeep;

typedef struct SDBlkWholeOptions {
  SDBlkReport report; /* or NULL */
  void *context;      /* handed to report */
  SDBlkKeep keep;
} SDBlkWholeOptions;

/* Makes whole reading of a volume that was opened, before its first block is cut.  options is
 * copied; NULL stands for no report and SDBLK_KEEP_FIRST.  Returns 0, or -1 with a message
 * registered: blocks were cut already, or memory ran out. */
SDBLK_API int sdblk_read_whole(SDBlkVol *vol, const SDBlkWholeOptions *options);

/* Opens a file for whole reading, of any size, empty ones too.  record_length is the length in
 * force at first, in bytes; below 1 means 4096.  Returns the volume, or NULL with a message
 * registered: the file cannot be examined, opened or mapped or is no regular file, or memory ran
 * out. */
SDBLK_API SDBlkVol *sdblk_open_whole(const char *path, int32_t record_length,
                                     const SDBlkWholeOptions *options);

/* The same of size bytes in memory, which must outlive the volume and are not changed. */
SDBLK_API SDBlkVol *sdblk_open_whole_buffer(const void *bytes, int64_t size, int32_t record_length,
                                            const SDBlkWholeOptions *options);

/* What whole reading has met so far. */
typedef struct SDBlkWholeCounts {
  int64_t records;
  int64_t blocks;                 /* control blockettes and data records */
  int64_t sequence_breaks;        /* records whose number is not one above that before */
  int64_t padding_bytes;          /* in skips of cause padding */
  int64_t skipped_bytes;          /* in all other skips */
  int64_t record_bytes;           /* in records: with those in skips of causes padding and garbage,
                                     all that was read */
  int64_t first_record_length;    /* bytes; 0 before the first record */
  int64_t findings[SDBLK_CAUSES]; /* by cause */
} SDBlkWholeCounts;

/* The counts of a volume that is read whole; all zero for any other. */
SDBLK_API SDBlkWholeCounts sdblk_whole_counts(const SDBlkVol *vol);

/* Where a volume that is read whole stands: all that decides what sdblk_parseblk hands out next. */
typedef struct SDBlkPlace {
  int64_t block;         /* the number of the block that is handed out next */
  int64_t record_offset; /* of the record that is being read, from the start of the volume */
  int32_t record_length; /* its length, bytes */
  int32_t length;        /* the record length in force, bytes */
  int32_t number;        /* the record's number, or -1 without one */
  int32_t pos;           /* how far a control record is read, bytes from its start; else 0 */
  char letter;           /* its type letter */
} SDBlkPlace;

/* The place of a volume that is read whole, and going back, or on, to one: blocks are handed out
 * from there as they were, with the same numbers.  What is registered of abbreviations stays, so
 * abbreviation blockettes must not be decoded again; blocks that are met again are counted and
 * reported again. */
SDBLK_API SDBlkPlace sdblk_place(const SDBlkVol *vol);
SDBLK_API void sdblk_go_to(SDBlkVol *vol, const SDBlkPlace *place);

/* The number of a block that was read whole, from 0; without the bounds of block_number. */
SDBLK_API int64_t sdblk_block_number(const SDBlk *block);

/* The bytes of a block that are there, and in *size how many: of a control blockette from its type
 * on; of a data record the record; of a data blockette from its type to the next of the chain.
 * Borrowed from the block (control) or the volume (data); NULL and 0 for a block without. */
SDBLK_API const char *sdblk_raw(const SDBlk *block, int64_t *size);

/* What a data record says of its samples, straight from its bytes: the block need not be decoded.
 * Every value lies within what the file holds, whatever the header says. */
typedef struct SDBlkSamples {
  char station[6]; /* codes without the white space around them, ended by a 0 */
  char location[3];
  char channel[4];
  char network[3];
  const char *data;   /* the first byte of the samples ("data_offset"), borrowed from the volume;
                             NULL where that is 0 or lies outside the record */
  int64_t bytes;      /* from there to the record's end */
  int32_t encoding;   /* of the first blockette 1000 ("format"); -1 without one */
  int32_t big_endian; /* order of the samples' bytes: "order" there, else that of the header */
  int32_t samples;    /* how many ("nsamp") */
  double rate;        /* samples a second: of the first blockette 100 where that is finite and
                             above 0, else from "srate_factor" and "srate_multiplier"; 0 without
                             one, or below 0.000001 */
  int32_t has_start;  /* 0: the start time has no value */
  int64_t start_us;   /* microseconds since 1970-01-01T00:00:00 UTC: the start time with the
                             microseconds of the first blockette 1001 and, unless the flags say that
                             it is applied already, the time correction */
  int64_t start;      /* the same in nanoseconds; the largest or least there are outside of the
                             years 1678 to 2262 */
  int32_t timing_quality; /* the lowest of its blockettes 1001, percent; -1 without one */
} SDBlkSamples;

/* Reads them.  Returns 0, or -1 with a message registered for a block that is no data record or has
 * fewer than 48 bytes. */
SDBLK_API int sdblk_samples(const SDBlk *record, SDBlkSamples *samples);

/* Hangs the data blockettes on the block of a data record that is read whole, as sdblk_unstuffblk
 * does, but takes no fields, drops those that were taken before, leaves data_offset as it is and
 * reports nothing: for programs that look at a record's bytes first, and may decode it then.  *start is the start time of its fixed section, epoch seconds, or
 * SDBLK_NO_TIME where it has no value.  Returns 1 where sdblk_unstuffblk has nothing to report of the
 * start time, the byte order and the chain, 0 where it has; -1, with messages registered, for
 * another block, or when memory runs out. */
SDBLK_API int sdblk_chain(SDBlk *record, double *start);

/* The code of an SDBlkAbbrRef that is there but has no value. */
#define SDBLK_NO_CODE INT32_MIN

/* What a code is defined by so far, for the functions below: of an integer that refers to an
 * abbreviation its entry's definition, for what stood before its block; of an SDBlkAbbrRef what
 * sdblk_definition_of gives for its field's abbr_key ("rid") and its code.  0 when the code is not
 * defined or the volume is read strictly. */
SDBLK_API int32_t sdblk_definition_of(const SDBlkVol *vol, const char *abbr_key, int32_t code);

/* The abbreviation blockettes that define a code: how many there are so far, and of one of them,
 * counted from 0 in the order of the volume, the block number (-1 where it is not known) and, where
 * a copy is kept, the block (else NULL), owned by the volume. */
SDBLK_API int32_t sdblk_definitions(const SDBlkVol *vol, int32_t definition);
SDBLK_API int64_t sdblk_definition_number(const SDBlkVol *vol, int32_t definition, int32_t which);
SDBLK_API const SDBlk *sdblk_definition_block(const SDBlkVol *vol, int32_t definition,
                                              int32_t which);

/* The entry of a field that stands at a position of a list of fields: fields[position] of a
 * definition with the contents of its block, or sub[position] of a group with one of its
 * repetitions (value.ea[i]).  NULL where the field is absent. */
SDBLK_API const SDBlkEntry *sdblk_entry_at(const Arr *contents, const SDBlkFieldDef *fields,
                                           int32_t position);

/* Whether a field that is there has a value: 0 for a number or time that is blank or unreadable. */
static inline int sdblk_has_value(const SDBlkEntry *entry) { return entry->definition >= 0; }

/* The integer of an entry of kind SDBLK_INT or SDBLK_ABBR_KEY, unsigned where its format is
 * "ULONG". */
SDBLK_API int64_t sdblk_integer(const SDBlkEntry *entry);

/* The exact bytes of a decoded field, as they stand in the block: for an array, of one element,
 * else element is 0.  A "V" field's do not include its "~"; those of a group are none.  entry must
 * be one of the block's own entries.  Returns the first byte, borrowed as sdblk_raw's, and in *size
 * how many; NULL and 0 when the entry is not found. */
SDBLK_API const char *sdblk_field_bytes(const SDBlk *block, const SDBlkEntry *entry,
                                        int32_t element, int64_t *size);

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_SEED_WHOLE_H_ */

/* sdblk - reading SEED volumes block by block.
 *
 * A SEED volume (Standard for the Exchange of Earthquake Data, version 2.x) is a run of logical
 * records.  Control records (types V, A, S, T) hold blockettes of ASCII text; data records (D, R,
 * Q, M) hold a binary header, a chain of binary data blockettes and the samples.  This library
 * walks a volume one block at a time, where a block is either one control blockette or one whole
 * data record, decodes the block's fields by name, lists them, and can assemble whole stations.
 *
 * A whole program, which prints the code and latitude of each station:
 *
 *     #include <stdio.h>
 *
 *     #include "seed/sdblk.h"
 *
 *     int main(void) {
 *       SDBlkVol *vol = sdblk_new("dataless.seed", NULL, 0, 0);
 *       if (vol == NULL) elog_die(0, "dataless.seed cannot be opened.\n");
 *       SDBlk *blk = NULL;
 *       int r;
 *       while ((r = sdblk_parseblk(vol, &blk)) >= 0 && r != SDBLK_EOF) {
 *         const char *sta;
 *         double lat;
 *         if (sdblk_unstuffblk(blk) < 0) elog_complain(0, "A block is damaged.\n");
 *         if (blk->blockette_type == 50 &&
 *             sdblk_getv(blk->contents, "sta", &sta, "lat", &lat, NULL) == 0) {
 *           printf("%s %f\n", sta, lat);
 *         }
 *         if (blk->data_ptr == NULL && blk->blockette_length == 0) break;
 *       }
 *       if (r != SDBLK_EOF) elog_complain(0, "The volume cannot be read to its end.\n");
 *       sdblk_free(blk);
 *       sdblk_closevol(vol);
 *       return 0;
 *     }
 *
 * A blockette whose length field is 0 is handed out without moving on, again and again; that is why
 * the loop stops at one.  The folder examples holds two longer programs, one on stations and one on
 * data records.  CMake finds the library as tarvik::sdblk of the package tarvik, pkg-config as
 * sdblk.
 *
 * Beside this header: support/elog.h has the messages, support/tbl.h and support/arr.h the lists
 * and arrays that stand in the records here, support/epoch.h turns times into text and back, and
 * seed/getv.h is for C++.
 *
 * Names of fields.  A program asks for a field by its key.  The catalogue below has the keys of
 * every blockette, and `tarvik -vv FILE` lists a volume with them.  Fields stand in the order of
 * the SEED manual, without those that head each blockette: the first field of a blockette is the
 * manual's field 3 (blockettes [50] and [52] begin with "sta" and "loc"), that of the data records'
 * fixed section its field 4 ("sta").  Those most asked for:
 *
 *     station, [50]        sta lat lon elev name time endtime net
 *     channel, [52]        loc chan azimuth dip samprate time endtime
 *     unit, comment, ...   the block that a code refers to: "*sunits" of [52] is its [34], whose
 *                          "name" is the unit
 *     data record          sta loc chan net time nsamp srate_factor srate_multiplier
 *     after its header     type 1000: format, order, dlenp; type 100: samprate; see SDBlk.next
 *
 * Results and messages.  Functions return 0 (or a count) on success and -1 (or NULL) on failure,
 * after registering one message or more with elog_log; elog_complain writes what is registered,
 * elog_clear_register drops it.  Three kinds of faults end the program through elog_die, which an
 * embedding program can replace (elog_set_die): a text longer than the fixed buffer that must take
 * it, non-digits in a decimal integer field of a blockette, and a catalogue out of range.  Where
 * the replacement leaves the call by longjmp or an exception, the block, the volume and the station
 * at hand hold what they held when the fault was met, and are released as always.  The log goes to
 * standard error, or where elog_set_sink says.
 *
 * Times are seconds since 1970-01-01T00:00:00 UTC, without leap seconds, as doubles.  A time field
 * that is empty holds SDBLK_NO_TIME.
 *
 * Lifetimes.  What sdblk_getv hands out is borrowed from the block and lives until the block is
 * cleared, freed, decoded again, or refilled by sdblk_parseblk; sdblk_copy makes a copy that stays.
 * data_ptr points into the volume's image and lives as long as the volume.  So do the abbreviation
 * blocks that fields refer to.  Texts and numbers of any block, copy or station outlive its volume,
 * but then its references must not be followed, and it must not be decoded or listed
 * (sdblk_printblk follows them).  Decode a block before the next one is cut: a data record is
 * decoded with the volume's record length, and an abbreviation goes into the dictionary as a copy
 * of the block cut last (SDBlkVol.current): keep that block until reading is done.  Blocks do not
 * keep their volume alive, and may be released after it.
 *
 * Threads.  Threads may read different volumes at the same time.  A volume, its blocks, and the
 * stations, lists and arrays made of them are used by one thread at a time; nothing is locked.  The
 * catalogue may be read by all, once a volume is open.  Each thread has its own register of
 * messages, its own sink of the log (elog_set_sink; standard error until it is set) and its own
 * fatal hook (elog_set_die): a volume's messages are in the thread that read it.  A thread takes
 * some 170 KiB for its log when it opens its first volume (without that memory the volume is not
 * opened, errno is ENOMEM and no message is registered), and gives it back, its last lines written,
 * when it ends; what the other threads have not written when the process exits is lost
 * (elog_flush).  For one thread at a time, before the others start: elog_init, std_set_now,
 * announce_str.
 *
 * The header compiles as C11 and as C++20.
 */
#ifndef TARVIK_SEED_SDBLK_H_
#define TARVIK_SEED_SDBLK_H_

#include <stddef.h>
#include <stdint.h>

#include "../support/api.h"
#include "../support/arr.h"
#include "../support/elog.h"
#include "../support/tbl.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this header, and that of the library that runs ("0.1.0"). */
#define SDBLK_VERSION_MAJOR 0
#define SDBLK_VERSION_MINOR 1
#define SDBLK_VERSION_PATCH 0
SDBLK_API const char *sdblk_version(void);

/* Result of sdblk_parseblk at the end of the volume. */
#define SDBLK_EOF 999999999
/* The value of a time field that is empty; listed as NULL. */
#define SDBLK_NO_TIME 9999999999.999
/* blockette_type of a whole data record. */
#define SDBLK_DATA_RECORD 99

/* What a field decodes to: SDBlkFieldDef.kind. */
enum {
  SDBLK_INT = -1,          /* value.i: one integer */
  SDBLK_ABBR_KEY = -2,     /* value.i: the lookup code that an abbreviation blockette defines */
  SDBLK_DOUBLE = -3,       /* value.d: one real number, or a time */
  SDBLK_STRING = -4,       /* value.s: one text, trimmed */
  SDBLK_INT_ARRAY = -5,    /* value.ia: count integers */
  SDBLK_DOUBLE_ARRAY = -6, /* value.da: count real numbers */
  SDBLK_STRING_ARRAY = -7, /* value.sa: count texts */
  SDBLK_GROUP_ARRAY = -8,  /* value.ea: count entry arrays, one per repetition of a field group */
  SDBLK_REF_ARRAY = -9     /* value.ra: count references to abbreviation blockettes */
};

typedef struct SDBlkFieldDef SDBlkFieldDef;
typedef struct SDBlkDef SDBlkDef;
typedef struct SDBlkAbbrRef SDBlkAbbrRef;
typedef struct SDBlkEntry SDBlkEntry;
typedef struct SDBlk SDBlk;
typedef struct SDBlkVol SDBlkVol;
typedef struct SDBlkStorage SDBlkStorage; /* the library's own bookkeeping of a block */
typedef struct SDBlkWhole SDBlkWhole;     /* the same of a volume that is read whole */

/* ---- The catalogue: what the library knows of the SEED format ------------------------------- */

/* One field of a blockette, in the order in which the fields stand in the blockette.  All text is
 * constant and lives as long as the program. */
struct SDBlkFieldDef {
  const char *key;          /* short name, unique in its array: the name of the decoded entry */
  const char *title;        /* the field's name */
  const char *description;  /* one sentence on what it holds */
  int32_t stype;            /* how the bytes are cut: 'A', 'D', 'F' fixed-width text; 'V' text up to
                               a "~"; 'B' binary; 0 for a repeated group, which takes none itself */
  int32_t width;            /* characters or bytes; for 'V' the standard's maximum, not enforced */
  const char *format;       /* picture ("####"), conversion word ("TIME", "UWORD"), or "" */
  int32_t kind;             /* SDBLK_INT ... SDBLK_REF_ARRAY */
  const char *number_entry; /* a repeated field: key of the earlier field that holds the count */
  int32_t nsub;             /* a repeated group: number of fields in sub; else 0 */
  const SDBlkFieldDef *sub; /* a repeated group: its fields; else NULL */
  const char *abbr_key;     /* a lookup code: key of the field that defines such codes; else NULL */
};

/* One blockette type. */
struct SDBlkDef {
  int32_t type;                /* SEED blockette type; 99 for the fixed section of a data record */
  const char *id;              /* "B0052"; "DATA" for type 99 */
  const char *name;            /* the blockette's name */
  const char *description;     /* one sentence, or "" */
  const char *rectypes;        /* record types in which it occurs ("S", "DRQM"); informative */
  int32_t nfields;             /* number of fields */
  const SDBlkFieldDef *fields; /* the fields, in blockette order */
};

/* Number of definitions in the catalogue, and of slots in its index. */
#define SEED_BLKDEFS_COUNT 52
#define SEED_BLKDEFS_INDEX_SIZE 2048

/* The catalogue, in ascending order of type. */
SDBLK_API extern const SDBlkDef seed_blkdefs[SEED_BLKDEFS_COUNT];
/* The definition of each blockette type from 0 to 2047, or NULL.  Filled by the first sdblk_new. */
SDBLK_API extern const SDBlkDef *seed_blkdefs_index[SEED_BLKDEFS_INDEX_SIZE];
/* 1 until the index is filled, then 0. */
SDBLK_API extern int seed_blkdefs_first;

/* Fills seed_blkdefs_index on the first call; later calls do nothing.  Returns 0.  sdblk_new calls
 * it; a program that decodes without opening a volume calls it itself. */
SDBLK_API int sdblk_blkdefs_init(void);

/* ---- Decoded values -------------------------------------------------------------------------- */

/* One element of a SDBLK_REF_ARRAY field. */
struct SDBlkAbbrRef {
  int32_t code; /* the lookup code as read */
  SDBlk *blk;   /* the abbreviation blockette that defines it, or NULL; owned by the volume */
};

/* One decoded field.  Entries that the library decodes or copies lie in the storage of the array
 * that holds them and go with it; one that a program makes by hand (pooled 0, the entry and what it
 * holds from malloc) is released by free_sdblk_entry. */
struct SDBlkEntry {
  const SDBlkFieldDef *def; /* the field's definition; its kind says which member of value holds */
  SDBlk *ref;               /* the abbreviation that an integer refers to, or NULL; not owned */
  int32_t count;            /* 1 for a single value; the number of elements of an array kind */
  union {
    int32_t i;
    double d;
    char *s;
    int32_t *ia;
    double *da;
    char **sa;
    Arr **ea; /* an element is NULL where the data ended before that repetition */
    SDBlkAbbrRef *ra;
  } value;
  uint32_t pooled;    /* 1: lies in its array's storage */
  int32_t definition; /* whole reading: -1 where the field is there but has no value, else what the
                         code in it is defined by, for sdblk_definitions, or 0 for nothing */
};

/* Reads decoded fields by name.  contents is a block's contents, one element of a group's value.ea,
 * or the contents of a referenced abbreviation block; it may be NULL.  Then follow pairs of a key
 * and the address of a result, and a NULL key at the end.  The result's type follows the field's
 * kind:
 *
 *     SDBLK_INT, SDBLK_ABBR_KEY  int32_t *         SDBLK_DOUBLE_ARRAY  double **
 *       the same with "*key"     SDBlk **          SDBLK_STRING_ARRAY  char ***
 *     SDBLK_DOUBLE               double *          SDBLK_GROUP_ARRAY   Arr ***
 *     SDBLK_STRING               char **           SDBLK_REF_ARRAY     SDBlkAbbrRef **
 *
 * "*key" gives the abbreviation block that the integer refers to, or NULL.  The number of elements
 * of an array is the value of its count field ("nstages" with "stages").  A SDBLK_INT_ARRAY is
 * found but not stored.  Returns 0, or -1 at the first key that is missing, with "sdblk_getv: entry
 * '%s' not defined.\n" registered; results before it are stored, later ones are not.  A key has at
 * most 511 characters.  Nothing checks that a result fits its field: the functions below do, and
 * for C++ sdblk::get in seed/getv.h. */
SDBLK_API int sdblk_getv(const Arr *contents, ...) SDBLK_SENTINEL;

/* The entry of a key, whose field must be of a kind (SDBLK_INT takes SDBLK_ABBR_KEY too); contents
 * as above.  It lives as long as the contents.  NULL with a message registered: that of sdblk_getv
 * for a missing key, "sdblk_get_entry: entry '%s' holds %s, not %s.\n" for a field of another kind. */
SDBLK_API const SDBlkEntry *sdblk_get_entry(const Arr *contents, const char *key, int32_t kind);

/* The value of one field of the kind that the name says, with the checks of sdblk_get_entry.  Each
 * returns 0, or -1 with its message registered and the result as it was.  Texts and arrays are
 * borrowed, as those of sdblk_getv; count, unless NULL, takes the number of elements.
 * sdblk_get_abbr gives the abbreviation block that an integer refers to, or NULL. */
SDBLK_API int sdblk_get_int(const Arr *contents, const char *key, int32_t *value);
SDBLK_API int sdblk_get_double(const Arr *contents, const char *key, double *value);
SDBLK_API int sdblk_get_text(const Arr *contents, const char *key, const char **text);
SDBLK_API int sdblk_get_abbr(const Arr *contents, const char *key, const SDBlk **block);
SDBLK_API int sdblk_get_ints(const Arr *contents, const char *key, const int32_t **values,
                             int32_t *count);
SDBLK_API int sdblk_get_doubles(const Arr *contents, const char *key, const double **values,
                                int32_t *count);
SDBLK_API int sdblk_get_texts(const Arr *contents, const char *key, const char *const **texts,
                              int32_t *count);
SDBLK_API int sdblk_get_groups(const Arr *contents, const char *key, Arr *const **groups,
                               int32_t *count);
SDBLK_API int sdblk_get_refs(const Arr *contents, const char *key, const SDBlkAbbrRef **references,
                             int32_t *count);

/* Releases one entry made by hand and what it owns; does nothing for a pooled entry or NULL.  The
 * callback that freearr takes for every entry array. */
SDBLK_API void free_sdblk_entry(void *entry);

/* A deep copy of an entry array, to be released with freearr(copy, free_sdblk_entry); a NULL array
 * gives an empty one.  Referenced abbreviation blocks are shared, not copied.  NULL when memory
 * runs out, with a message that names the field and the member. */
SDBLK_API Arr *sdblk_copy_entry_arr(const Arr *entries);

/* ---- Blocks ---------------------------------------------------------------------------------- */

/* One block: a control blockette, a data record, or a data blockette inside a data record.  Blocks
 * come from sdblk_parseblk, sdblk_unstuffblk (chained ones) and sdblk_copy. */
struct SDBlk {
  int32_t logical_sequence; /* sequence number of the logical record in which the block starts */
  int32_t logical_length;   /* logical record length in force, bytes */
  int64_t record_offset;    /* offset of that record from the start of the volume, bytes */
  char record_type;         /* its type letter: V A S T D R Q M, or whatever the header holds */
  const char *data_ptr;     /* data record: its first byte, header included; data blockette: its
                               first byte; control blockette: NULL.  Points into the image */
  int32_t block_number;     /* 0 for the first block of the volume */
  int32_t blockette_length; /* control: its length field (bytes, the 7 of type and length included);
                               data record: 2^dlenp of its blockette 1000, else 0 */
  int64_t file_offset;      /* offset of the block from the start of the volume, bytes; see
                               sdblk_unstuff_dblk for data blockettes */
  int32_t blockette_type;   /* SEED blockette type; SDBLK_DATA_RECORD for a data record */
  int64_t data_offset;      /* data record: offset of its first sample from its start; else 0 */
  int32_t big_endian;       /* data: nonzero when its binary fields have the high byte first */
  char *blockette_raw;      /* control blockette: its blockette_length bytes and one 0 byte; in a
                               copy without the 0; else NULL.  Owned by the block, from malloc; a
                               program that takes it over sets NULL here */
  const SDBlkDef *blkdef;   /* definition, or NULL for a type that the catalogue does not know */
  Arr *contents;            /* decoded fields: key -> SDBlkEntry; empty until decoded */
  SDBlk *next;              /* data record, decoded: the first blockette after its header, then the
                               next one of the chain, or NULL; in a copy, shared with the original
                               and not owned */
  SDBlkVol *vol;            /* the volume that the block came from; not owned */
  SDBlkStorage *storage;    /* the library's own; leave alone */
};

/* A deep copy of a block (fields and raw bytes; volume, definition, chain and referenced blocks are
 * shared), or NULL with a message registered when memory runs out.  NULL gives NULL. */
SDBLK_API SDBlk *sdblk_copy(const SDBlk *block);

/* Empties a block for reuse: its chain, raw bytes and fields go; contents stays, empty.  Memory is
 * kept for the next use.  NULL does nothing. */
SDBLK_API void sdblk_clear(SDBlk *block);

/* Releases a block (an SDBlk) with all that it owns.  NULL does nothing.  Takes void * so that it
 * can be handed to freetbl and freearr as it is. */
SDBLK_API void sdblk_free(void *block);

/* Releases one block but none of its chain: what stands in next stays valid and is released by
 * sdblk_free, with all that is chained to it.  A data blockette that is still in the chain of its
 * record goes with the record: neither function does anything with it. */
SDBLK_API void sdblk_free_single(SDBlk *block);

/* ---- Volumes --------------------------------------------------------------------------------- */

/* Why a function of a volume failed. */
enum {
  SDBLK_NO_FAILURE = 0,
  SDBLK_FAILURE_MEMORY = 1, /* memory ran out */
  SDBLK_FAILURE_DAMAGED = 2 /* the volume is not as it should be; never when it is read whole */
};

/* The last failure of sdblk_parseblk or sdblk_unstuffblk of a volume. */
typedef struct SDBlkFailure {
  int32_t code;   /* SDBLK_NO_FAILURE ... SDBLK_FAILURE_DAMAGED */
  int64_t offset; /* of the block that cannot be decoded, or where reading stopped: bytes from the
                     start of the volume */
  int64_t block;  /* the block's number, from 0; that of the next one, where none could be cut */
  char field[24]; /* the key of the field in which decoding stopped, or "" */
  char text[256]; /* the message that says why, without its line end; cut where it is longer */
} SDBlkFailure;

/* One open volume.  A program may read the members; only the library changes them. */
struct SDBlkVol {
  char *filename;           /* copy of the path; NULL for a volume in a buffer */
  const char *image;        /* first byte of the volume */
  int64_t image_size;       /* its size, bytes */
  const char *cursor;       /* next byte to be read; never past the end of the image */
  int64_t offset;           /* cursor - image */
  int32_t record_pos;       /* bytes of the current logical record that are read; 0: at its start */
  int32_t logical_length;   /* logical record length in force, bytes */
  int32_t logical_sequence; /* sequence number of the current logical record */
  int32_t nondigits;        /* non-digits met in integer fields */
  int64_t record_offset;    /* offset of the current logical record, bytes */
  char record_type;         /* its type letter (header byte 7) */
  char continuation;        /* its continuation flag (header byte 8) */
  int32_t nblocks;          /* blocks handed out so far */
  SDBlk *current;           /* the program's block, cut last as a control block; not owned */
  Arr *abbrs;               /* abbreviation dictionary: "uid:3" -> SDBlk copy of the blockette */
  /* The library's own: */
  int32_t fd;         /* descriptor of the mapped file, or -1 */
  int64_t given_back; /* bytes at the start of the mapping whose pages were given back */
  SDBlkWhole *whole;  /* whole reading (seed/whole.h), or NULL */
  SDBlkFailure failure;
};

/* The last failure of sdblk_parseblk or sdblk_unstuffblk of a volume: a code of 0 before the first.
 * It lives as long as the volume and stays until the next one; a fault that ends the program (see
 * the head of this page) leaves it as it was. */
SDBLK_API const SDBlkFailure *sdblk_failure(const SDBlkVol *vol);

/* Opens a volume: the file called filename, mapped read-only, or, when filename is NULL, the nbytes
 * bytes at buffer, which must outlive the volume and are not changed.  logical_length is the
 * logical record length to try first, in bytes; below 1 means 4096.  Lengths are then found from
 * the headers of the records (SEED manual, "Logical records"), but a record that would reach the
 * end of the volume ends there: a volume that is no longer than logical_length in all reads as one
 * record.  Pass 512, say, for small files of data records.  Returns the volume, or NULL with a
 * message registered: the file cannot be examined, opened or mapped, is no regular file, or has
 * fewer than 10 bytes; or memory ran out. */
SDBLK_API SDBlkVol *sdblk_new(const char *filename, const char *buffer, int32_t nbytes,
                              int32_t logical_length);

/* Opens size bytes in memory, of any number, as sdblk_new does up to 2 GiB; record_length is its
 * logical_length. */
SDBLK_API SDBlkVol *sdblk_open_buffer(const void *bytes, int64_t size, int32_t record_length);

/* Releases the volume record and its dictionary, but neither the mapping and its descriptor nor the
 * abbreviation blocks in the dictionary, which stay for the life of the process.  Kept for programs
 * that hold on to those; others call sdblk_closevol.  NULL does nothing. */
SDBLK_API void sdblk_freevol(SDBlkVol *vol);

/* Releases the volume with everything that belongs to it: mapping, descriptor, dictionary and the
 * abbreviation blocks in it.  NULL does nothing. */
SDBLK_API void sdblk_closevol(SDBlkVol *vol);

/* Cuts the next block out of the volume.  *blkp is NULL before the first call, which allocates the
 * block, or a block of the program's own, zero-filled, from calloc; later calls clear and refill
 * it.  Returns the blockette length of a control blockette (0 or more; see the note on length 0
 * above), 0 for a data record, SDBLK_EOF at the end of the volume, -1 on a damaged volume or when
 * memory runs out, with a message registered; there is no way to read on then.  The block must be
 * freed also after SDBLK_EOF and -1, but what it holds then is of no use.  A control blockette that
 * runs on into the next record comes whole.  Blockettes 5, 8 and 10 come decoded, for the record
 * length that they hold ("llenp", [10] field 4); others have empty contents. */
SDBLK_API int sdblk_parseblk(SDBlkVol *vol, SDBlk **blkp);

/* ---- Decoding -------------------------------------------------------------------------------- */

/* Decodes the fields of a block into its contents: a control blockette field by field, a data
 * record with its whole chain of data blockettes.  An abbreviation blockette (30 to 35, 41 to 48)
 * is also copied into the volume's dictionary, once: the same code again is refused.  Returns 0,
 * also when the data ends early (the fields after it are absent) and for a blockette that the
 * catalogue does not know (it has no fields), or -1 with messages registered; what was decoded
 * before the fault stays.  Decoding a block again replaces its fields. */
SDBLK_API int sdblk_unstuffblk(SDBlk *block);

/* The two halves of sdblk_unstuffblk: a control blockette, and a data record.  The decoded data
 * blockettes hang on block->next, each with its own fields; file_offset of a chained one is the
 * volume's reading position plus the blockette's offset in the record. */
SDBLK_API int sdblk_unstuff_blk(SDBlkVol *vol, SDBlk *block);
SDBLK_API int sdblk_unstuff_dblk(SDBlkVol *vol, SDBlk *block);

/* The field walker: decodes repetitions of the nfields fields over the *remaining bytes at *cursor
 * and advances both.  arrays holds one entry array per repetition; a NULL element gets a new array
 * with its first field.  big_endian is the byte order of binary fields.  Returns 0, or -1 with a
 * message registered. */
SDBLK_API int sdblk_unstuff_sblk(Arr **arrays, const char **cursor, int32_t *remaining,
                                 int32_t big_endian, int32_t repetitions, SDBlkVol *vol,
                                 int32_t nfields, const SDBlkFieldDef *fields);

/* Cuts one field's bytes into text (4096 bytes), ended by a 0, and advances.  Returns 0. */
SDBLK_API int sdblk_parse_sentry(const SDBlkFieldDef *field, const char **cursor,
                                 int32_t *remaining, char *text);

/* Scanners of fixed-width and variable ASCII fields.  text need not end in a 0 byte, but one ends
 * it.
 *
 * scan_int      up to width (at most 80) characters as a decimal integer, as strtol reads it, cut to
 *               32 bits; blank is 0.  With a format, every non-digit under a "#" counts as "0";
 *               returns how many there were (0 without a format), or -1 with a message registered
 *               when there is no number
 * scan_double   up to width (at most 80) characters as strtod reads them in the "C" locale; blank
 *               is 0.  Returns 0, or -1 with a message registered
 * scan_time     a SEED time ("YYYY,DDD,HH:MM:SS.FFFF", shorter forms too), ended by a 0 byte; empty
 *               gives SDBLK_NO_TIME.  Returns 0
 * scan_str      up to width (at most 16383) characters without white space at both ends, to result
 *               (width + 1 bytes).  Returns 0
 * scan_var_str  text up to a "~", at most limit characters, without white space at both ends, to
 *               result (limit + 1 bytes).  Returns the number of characters consumed, the "~"
 *               included */
SDBLK_API int scan_int(const char *text, const char *format, int64_t width, int32_t *result);
SDBLK_API int scan_double(const char *text, int64_t width, double *result);
SDBLK_API int scan_time(const char *text, double *result);
SDBLK_API int scan_str(const char *text, int64_t width, char *result);
SDBLK_API int64_t scan_var_str(const char *text, int64_t limit, char *result);

/* ---- Listing --------------------------------------------------------------------------------- */

/* Lists a decoded block through elog_notify, every line after prefix: a header line at level 0;
 * header, raw bytes, fields, referenced abbreviations and chained data blockettes at any other
 * level. Returns 0. */
SDBLK_API int sdblk_printblk(const SDBlk *block, const char *prefix, int32_t level);

/* The same, each line to a callback instead: its bytes, which need not be valid UTF-8 and end in a
 * newline, live until the callback returns.  It must neither log nor list.  A fault that ends the
 * program is told to the log.  Returns 0. */
SDBLK_API int sdblk_printblk_to(const SDBlk *block, const char *prefix, int32_t level,
                                void (*lines)(void *context, const char *bytes, size_t size),
                                void *context);

/* Lists the fields of count entry arrays.  Returns 0. */
SDBLK_API int sdblk_print_sblk(Arr *const *arrays, int64_t count, const char *prefix,
                               int64_t nfields, const SDBlkFieldDef *fields);

/* Lists length bytes as rows of 64 characters.  Returns 0. */
SDBLK_API int sdblk_printbuf(const char *prefix, const char *bytes, int64_t length);

/* ---- Station buffer -------------------------------------------------------------------------- */

/* One epoch of a channel. */
typedef struct SDBlkChanSpan {
  double time;     /* its start, epoch seconds (blockette 52, "time") */
  double endtime;  /* its end, epoch seconds; SDBLK_NO_TIME when open */
  SDBlk *chan_blk; /* the blockette 52 */
  Tbl *resp_blks;  /* SDBlk *: its responses (53 to 58, 60 to 62), in volume order */
} SDBlkChanSpan;

/* One channel of a station. */
typedef struct SDBlkChan {
  char chan[8];      /* channel code */
  char loc[4];       /* location code, may be empty */
  Tbl *spans;        /* SDBlkChanSpan *: its epochs, in volume order */
  Tbl *comment_blks; /* SDBlk *: its comments (blockettes 59) */
} SDBlkChan;

/* One station.  It owns its lists and all that is in them.  They stay as they are until the buffer
 * is fed the block that starts the next station, or is released. */
typedef struct SDBlkSta {
  char net[4];             /* network code */
  char sta[16];            /* station code */
  int32_t state;           /* 0 none or complete, 1 started, 2 between channels, 3 in an epoch */
  Tbl *station_blks;       /* SDBlk *: blockettes 50, one an epoch of the station */
  Tbl *comment_blks;       /* SDBlk *: its comments (blockettes 51) */
  Arr *chans;              /* "CHA_LO" or "CHA" -> SDBlkChan * */
  Tbl *current_resps;      /* responses of the epoch opened last; not owned */
  SDBlkChan *current_chan; /* channel of the epoch opened last; not owned */
} SDBlkSta;

/* Feeds one decoded control block to the station buffer *stap, NULL before the first call.  Every
 * blockette that is taken is copied, so that the program's block can be refilled.
 *
 * accept and reject choose channels: lists of POSIX extended regular expressions (newtbl, then
 * settbl(list, -1, pattern) for each; the program keeps and releases lists and patterns), searched
 * in "NET_STA_CHA_LO", or "NET_STA_CHA" when the location code is empty.  A channel is wanted when
 * at least one of accept matches and none of reject; NULL accepts all and rejects none.  start and
 * end, in epoch seconds, choose stations, channel epochs and comments: those that begin at end or
 * before and end at start or after it.  Both 0.0 mean all.  With a verbosity above 0 what is taken
 * is listed (sdblk_printblk, level verbosity), a station with each of its channels that is new.
 *
 * Feed every control block of the volume in order, and no data records.  Returns
 *    1  the block was taken;
 *    0  it is not wanted; after a channel epoch that is not, what follows up to the next blockette
 *       50 or 52 is not wanted either;
 *    2  the station in the buffer is complete and the block was not taken: use the station, then
 *       feed the same block again, which may empty the buffer and start the next station;
 *   -1  failure, with a message registered: a field is missing, a pattern is no valid expression,
 *       or memory ran out; what was collected so far stays in the buffer.
 *
 * A code that does not fit its member of the records above ends the program.  At the end of the
 * volume a station whose state is not 0 is complete too. */
SDBLK_API int sdblk_setup_stabuf(const SDBlk *block, SDBlkSta **stap, Tbl *accept, Tbl *reject,
                                 int32_t verbosity, double start, double end);

/* Releases a station with all that it owns.  NULL does nothing. */
SDBLK_API void sdblk_free_stabuf(SDBlkSta *station);

/* Release one channel (SDBlkChan) or epoch (SDBlkChanSpan): callbacks for freearr and freetbl. */
SDBLK_API void free_chan(void *channel);
SDBLK_API void free_span(void *span);

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_SEED_SDBLK_H_ */

// The listing of one block of every type in the catalogue, values worked out by hand from the
// fields above each of them.  Blanks at the ends of lines do not count here.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

namespace {

using volume::Calibration;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::Detection;
using volume::Opaque;
using volume::Time;
using volume::Timing;
using volume::VolumeWriter;

struct ControlCase {
  int type;
  char record_type;
  bool fails;             // at a group that names a count which is not there
  std::string_view body;  // one field a line
  std::string_view listing;
};

struct DataCase {
  DataRecord record;
  unsigned length;  // of its one blockette
  std::string_view listing;
};

// clang-format off
const std::vector<ControlCase> kControlCases = {
    {5, 'V', false,
     "02.3"
     "12"
     "1999,001,12:30:15.5000~",
     R"(
000001: V: B0005[000000,000000008,0036]: Field Volume Identifier Blockette
        005003602.3121999,001,12:30:15.5000~
        version    = 02.3
        llenp      = 12
        time       = 1999:001:12:30:15
)"},

    {8, 'V', false,
     " 2.4"
     "12"
     "DYNG "
     "00"
     "BHZ"
     "2000,366~"
     "2001,001,05~"
     "1999~"
     "~"
     "XX",
     R"(
000001: V: B0008[000000,000000008,0052]: Telemetry Volume Identifier Blockette
        0080052 2.412DYNG 00BHZ2000,366~2001,001,05~1999~~XX
        version    = 2.4
        llenp      = 12
        sta        = DYNG
        loc        = 00
        chan       = BHZ
        time       = 2000:366:00:00:00
        endtime    = 2001:001:05:00:00
        time_sta   = 1998:365:00:00:00
        time_chan  = NULL
        net        = XX
)"},

    {10, 'V', false,
     "02.4"
     "09"
     "2021,075,00:00:00.0000~"
     "2021,076,23:59:59.9999~"
     "2021,080,07:45~"
     "Network centre~"
     " demo  volume ~",
     R"(
000001: V: B0010[000000,000000008,0104]: Volume Identifier Blockette
        010010402.4092021,075,00:00:00.0000~2021,076,23:59:59.9999~2021,
        080,07:45~Network centre~ demo  volume ~
        version    = 02.4
        llenp      = 9
        time       = 2021:075:00:00:00
        endtime    = 2021:076:23:59:59
        time_vol   = 2021:080:07:45:00
        orig_org   = Network centre
        label      = demo  volume
)"},

    {11, 'V', false,
     "002"
     "DYNG "
     "000003"
     "ABCDE"
     "000017",
     R"(
000001: V: B0011[000000,000000008,0032]: Volume Station Header Index Blockette
        0110032002DYNG 000003ABCDE000017
        nstas      = 2
        stas[0000].sta        = DYNG
        stas[0000].lseq       = 3
        stas[0001].sta        = ABCDE
        stas[0001].lseq       = 17
)"},

    {12, 'V', false,
     "0001"
     "2021,075~"
     "2021,076~"
     "000021",
     R"(
000001: V: B0012[000000,000000008,0035]: Volume Station Header Index Blockette
        012003500012021,075~2021,076~000021
        nspans     = 1
        spanstime       = 2021:075:00:00:00
        spansendtime    = 2021:076:00:00:00
        spanslseq       = 21
)"},

    {30, 'A', false,
     "Steim~"
     "0007"
     "050"
     "02"
     "F1 P4~"
     "F2~",
     R"(
000001: A: B0030[000000,000000008,0031]: Data Format Dictionary Blockette
        0300031Steim~000705002F1 P4~F2~
        name       = Steim
        did        = 7
        family     = 50
        nkeys      = 2
        keys[0000] = F1 P4
        keys[0001] = F2
)"},

    {31, 'A', false,
     "0012"
     "G"
     "Time gap~"
     "000",
     R"(
000001: A: B0031[000000,000000008,0024]: Comment Description Blockette
        03100240012GTime gap~000
        cid        = 12
        class      = G
        comment    = Time gap
        uid        = 0
)"},

    {32, 'A', false,
     "05"
     "Bulletin~"
     "2020~"
     "Centre~",
     R"(
000001: A: B0032[000000,000000008,0030]: Cited Source Dictionary Blockette
        032003005Bulletin~2020~Centre~
        sid        = 5
        auth       = Bulletin
        date       = 2020
        name       = Centre
)"},

    {33, 'A', false,
     "004"
     "Very broad band~",
     R"(
000001: A: B0033[000000,000000008,0026]: Generic Abbreviation Blockette
        0330026004Very broad band~
        gid        = 4
        descr      = Very broad band
)"},

    {34, 'A', false,
     "003"
     "M/S~"
     "Velocity in metres per second~",
     R"(
000001: A: B0034[000000,000000008,0044]: Units Abbreviation Blockette
        0340044003M/S~Velocity in metres per second~
        uid        = 3
        name       = M/S
        descr      = Velocity in metres per second
)"},

    {35, 'A', false,
     "006"
     "0002"
     "DYNG "
     "00"
     "BHZ"
     "0001"
     "0.500"
     "ABC  "
     "  "
     "BHN"
     "0000"
     "1.250",
     R"(
000001: A: B0035[000000,000000008,0052]: Beam Configuration Blockette
        03500520060002DYNG 00BHZ00010.500ABC    BHN00001.250
        bid        = 6
        ncomps     = 2
        comps[0000].sta        = DYNG
        comps[0000].loc        = 00
        comps[0000].chan       = BHZ
        comps[0000].subchan    = 1
        comps[0000].weight     = 0.500000
        comps[0001].sta        = ABC
        comps[0001].loc        =
        comps[0001].chan       = BHN
        comps[0001].subchan    = 0
        comps[0001].weight     = 1.250000
)"},

    {41, 'A', false,
     "0021"
     "FIR_A~"
     "B"
     "003"
     "004"
     "0002"
     " 1.2500000E-01"
     "-2.5000000E+00",
     R"(
000001: A: B0041[000000,000000008,0056]: FIR Dictionary Blockette
        04100560021FIR_A~B0030040002 1.2500000E-01-2.5000000E+00
        rid        = 21
        name       = FIR_A
        sym        = B
        iunits     = 3
        ounits     = 4
        ncoefs     = 2
        coefs[0000] = 0.125000
        coefs[0001] = -2.500000
)"},

    {42, 'A', false,
     "0022"
     "POLY~"
     "P"
     "003"
     "004"
     "M"
     "B"
     " 1.00000E-03"
     " 5.00000E+01"
     "-1.00000E+01"
     " 1.00000E+01"
     " 2.00000E-02"
     "002"
     " 1.50000E+00"
     " 0.00000E+00"
     " 2.50000E-01"
     " 1.00000E-04",
     R"(
000001: A: B0042[000000,000000008,0136]: Response (Polynomial) Dictionary Blockette
        04201360022POLY~P003004MB 1.00000E-03 5.00000E+01-1.00000E+01 1.
        00000E+01 2.00000E-02002 1.50000E+00 0.00000E+00 2.50000E-01 1.0
        0000E-04
        rid        = 22
        name       = POLY
        tran       = P
        iunits     = 3
        ounits     = 4
        poly       = M
        funits     = B
        lfreq      = 0.001000
        ufreq      = 50.000000
        lappr      = -10.000000
        uappr      = 10.000000
        maxerr     = 0.020000
        ncoefs     = 2
        coefs[0000].coef       = 1.500000
        coefs[0000].coef_err   = 0.000000
        coefs[0001].coef       = 0.250000
        coefs[0001].coef_err   = 0.000100
)"},

    {43, 'A', false,
     "0023"
     "PZ_A~"
     "A"
     "003"
     "004"
     " 6.00000E+04"
     " 2.00000E-02"
     "001"
     " 1.00000E+00"
     "-2.00000E+00"
     " 0.00000E+00"
     " 5.00000E-01"
     "002"
     "-3.70000E-02"
     " 3.70000E-02"
     " 0.00000E+00"
     " 0.00000E+00"
     " 1.00000E+00"
     "-2.00000E+00"
     " 0.00000E+00"
     " 5.00000E-01",
     R"(
000001: A: B0043[000000,000000008,0197]: Response (Poles & Zeros) Dictionary Blockette
        04301970023PZ_A~A003004 6.00000E+04 2.00000E-02001 1.00000E+00-2
        .00000E+00 0.00000E+00 5.00000E-01002-3.70000E-02 3.70000E-02 0.
        00000E+00 0.00000E+00 1.00000E+00-2.00000E+00 0.00000E+00 5.0000
        0E-01
        rid        = 23
        name       = PZ_A
        resp       = A
        iunits     = 3
        ounits     = 4
        norm       = 60000.000000
        fnorm      = 0.020000
        nzeros     = 1
        zerosreal       = 1.000000
        zerosimag       = -2.000000
        zerosreal_err   = 0.000000
        zerosimag_err   = 0.500000
        npoles     = 2
        poles[0000].real       = -0.037000
        poles[0000].imag       = 0.037000
        poles[0000].real_err   = 0.000000
        poles[0000].imag_err   = 0.000000
        poles[0001].real       = 1.000000
        poles[0001].imag       = -2.000000
        poles[0001].real_err   = 0.000000
        poles[0001].imag_err   = 0.500000
)"},

    {44, 'A', false,
     "0024"
     "COEF~"
     "D"
     "004"
     "005"
     "0001"
     " 1.00000E+00"
     " 0.00000E+00"
     "0002"
     " 2.00000E+00"
     " 1.00000E-01"
     " 4.00000E+00"
     " 2.00000E-01",
     R"(
000001: A: B0044[000000,000000008,0103]: Response (Coefficients) Dictionary Blockette
        04401030024COEF~D0040050001 1.00000E+00 0.00000E+000002 2.00000E
        +00 1.00000E-01 4.00000E+00 2.00000E-01
        rid        = 24
        name       = COEF
        resp       = D
        iunits     = 4
        ounits     = 5
        nnums      = 1
        numscoef       = 1.000000
        numscoef_err   = 0.000000
        ndens      = 2
        dens[0000].coef       = 2.000000
        dens[0000].coef_err   = 0.100000
        dens[0001].coef       = 4.000000
        dens[0001].coef_err   = 0.200000
)"},

    {45, 'A', false,
     "0025"
     "FAP~"
     "003"
     "004"
     "0001"
     " 1.00000E-01"
     " 2.00000E+00"
     " 3.00000E-02"
     "-9.00000E+01"
     " 1.50000E+00",
     R"(
000001: A: B0045[000000,000000008,0085]: Response List Dictionary Blockette
        04500850025FAP~0030040001 1.00000E-01 2.00000E+00 3.00000E-02-9.
        00000E+01 1.50000E+00
        rid        = 25
        name       = FAP
        iunits     = 3
        ounits     = 4
        nfaps      = 1
        fapsfreq       = 0.100000
        fapsamp        = 2.000000
        fapsamp_err    = 0.030000
        fapsphase      = -90.000000
        fapsphase_err  = 1.500000
)"},

    {46, 'A', true,
     "0026"
     "CORN~"
     "003"
     "004"
     "0001"
     " 1.00000E+00 2.00000E+00",
     R"(
000001: A: B0046[000000,000000008,0050]: Generic Response Dictionary Blockette
        04600500026CORN~0030040001 1.00000E+00 2.00000E+00
        rid        = 26
        name       = CORN
        iunits     = 3
        ounits     = 4
        ncorners   = 1
        corners    = UNDEFINED
)"},

    {47, 'A', false,
     "0027"
     "DECIM~"
     "2.0000E+02"
     "00010"
     "00003"
     " 1.2500E-01"
     "-1.2500E-01",
     R"(
000001: A: B0047[000000,000000008,0059]: Decimation Dictionary Blockette
        04700590027DECIM~2.0000E+020001000003 1.2500E-01-1.2500E-01
        rid        = 27
        name       = DECIM
        isamprate  = 200.000000
        decfac     = 10
        decoff     = 3
        delay      = 0.125000
        correction = -0.125000
)"},

    {48, 'A', true,
     "0028"
     "GAIN~"
     " 2.40000E+03"
     " 2.00000E-02"
     "00"
     " ",
     R"(
000001: A: B0048[000000,000000008,0043]: Channel Sensitivity/Gain Dictionary Blockette
        04800430028GAIN~ 2.40000E+03 2.00000E-0200
        rid        = 28
        name       = GAIN
        sens       = 2400.000000
        freq       = 0.020000
        nhistories = 0
        histories  = UNDEFINED
)"},

    {50, 'S', false,
     "DYNG "
     "-08.250000"
     "+115.500000"
     "+0012.5"
     "0003"
     "001"
     "Dyn gate~"
     "004"
     "3210"
     "10"
     "1999,001,12:30:15.5~"
     "~"
     "N"
     "XX",
     R"(
000001: S: B0050[000000,000000008,0089]: Station Identifier Blockette
        0500089DYNG -08.250000+115.500000+0012.50003001Dyn gate~00432101
        01999,001,12:30:15.5~~NXX
        sta        = DYNG
        lat        = -8.250000
        lon        = 115.500000
        elev       = 12.500000
        nchans     = 3
        ncomments  = 1
        name       = Dyn gate
        net_gid    = 4
        int_order  = 3210
        short_order = 10
        time       = 1999:001:12:30:15
        endtime    = NULL
        update     = N
        net        = XX
)"},

    {51, 'S', false,
     "2021,075~"
     "~"
     "0012"
     "000034",
     R"(
000001: S: B0051[000000,000000008,0027]: Station Comment Blockette
        05100272021,075~~0012000034
        time       = 2021:075:00:00:00
        endtime    = NULL
        cid        = 12
        level      = 34
)"},

    {52, 'S', false,
     "00"
     "BHZ"
     "0001"
     "004"
     "vault~"
     "003"
     "005"
     "-08.250000"
     "+115.500000"
     "-0012.5"
     "005.5"
     "090.0"
     "-90.0"
     "0007"
     "09"
     "2.0000E+01"
     "1.0000E-04"
     "0002"
     "CG~"
     "2021,075~"
     "2022,001~"
     "U",
     R"(
000001: S: B0052[000000,000000008,0126]: Channel Identifier Blockette
        052012600BHZ0001004vault~003005-08.250000+115.500000-0012.5005.5
        090.0-90.00007092.0000E+011.0000E-040002CG~2021,075~2022,001~U
        loc        = 00
        chan       = BHZ
        subchan    = 1
        inst_gid   = 4
        comment    = vault
        sunits     = 3
        cunits     = 5
        lat        = -8.250000
        lon        = 115.500000
        elev       = -12.500000
        depth      = 5.500000
        azimuth    = 90.000000
        dip        = -90.000000
        df_did     = 7
        dlenp      = 9
        samprate   = 20.000000
        maxdrift   = 0.000100
        ncomments  = 2
        flags      = CG
        time       = 2021:075:00:00:00
        endtime    = 2022:001:00:00:00
        update     = U
)"},

    {53, 'S', false,
     "A"
     "01"
     "003"
     "004"
     " 6.00000E+04"
     " 2.00000E-02"
     "002"
     " 1.00000E+00"
     "-2.00000E+00"
     " 0.00000E+00"
     " 5.00000E-01"
     "-3.70000E-02"
     " 3.70000E-02"
     " 0.00000E+00"
     " 0.00000E+00"
     "001"
     "-3.70000E-02"
     " 3.70000E-02"
     " 0.00000E+00"
     " 0.00000E+00",
     R"(
000001: S: B0053[000000,000000008,0190]: Response (Poles & Zeros) Blockette
        0530190A01003004 6.00000E+04 2.00000E-02002 1.00000E+00-2.00000E
        +00 0.00000E+00 5.00000E-01-3.70000E-02 3.70000E-02 0.00000E+00
        0.00000E+00001-3.70000E-02 3.70000E-02 0.00000E+00 0.00000E+00
        resp       = A
        stage      = 1
        iunits     = 3
        ounits     = 4
        norm       = 60000.000000
        fnorm      = 0.020000
        nzeros     = 2
        zeros[0000].real       = 1.000000
        zeros[0000].imag       = -2.000000
        zeros[0000].real_err   = 0.000000
        zeros[0000].imag_err   = 0.500000
        zeros[0001].real       = -0.037000
        zeros[0001].imag       = 0.037000
        zeros[0001].real_err   = 0.000000
        zeros[0001].imag_err   = 0.000000
        npoles     = 1
        polesreal       = -0.037000
        polesimag       = 0.037000
        polesreal_err   = 0.000000
        polesimag_err   = 0.000000
)"},

    {54, 'S', false,
     "D"
     "02"
     "004"
     "005"
     "0002"
     " 1.00000E+00"
     " 0.00000E+00"
     "-1.00000E+00"
     " 5.00000E-06"
     "0000"
     " ",
     R"(
000001: S: B0054[000000,000000008,0073]: Response (Coefficients) Blockette
        0540073D020040050002 1.00000E+00 0.00000E+00-1.00000E+00 5.00000
        E-060000
        resp       = D
        stage      = 2
        iunits     = 4
        ounits     = 5
        nnums      = 2
        nums[0000].coef       = 1.000000
        nums[0000].coef_err   = 0.000000
        nums[0001].coef       = -1.000000
        nums[0001].coef_err   = 0.000005
        ndens      = 0
)"},

    {55, 'S', false,
     "03"
     "003"
     "004"
     "0002"
     " 1.00000E-01"
     " 2.00000E+00"
     " 3.00000E-02"
     "-9.00000E+01"
     " 1.50000E+00"
     " 1.00000E-01"
     " 2.00000E+00"
     " 3.00000E-02"
     "-9.00000E+01"
     " 1.50000E+00",
     R"(
000001: S: B0055[000000,000000008,0139]: Response List Blockette
        0550139030030040002 1.00000E-01 2.00000E+00 3.00000E-02-9.00000E
        +01 1.50000E+00 1.00000E-01 2.00000E+00 3.00000E-02-9.00000E+01
        1.50000E+00
        stage      = 3
        iunits     = 3
        ounits     = 4
        nfaps      = 2
        faps[0000].freq       = 0.100000
        faps[0000].amp        = 2.000000
        faps[0000].amp_err    = 0.030000
        faps[0000].phase      = -90.000000
        faps[0000].phase_err  = 1.500000
        faps[0001].freq       = 0.100000
        faps[0001].amp        = 2.000000
        faps[0001].amp_err    = 0.030000
        faps[0001].phase      = -90.000000
        faps[0001].phase_err  = 1.500000
)"},

    {56, 'S', true,
     "04"
     "003"
     "004"
     "0001"
     " 1.00000E+00 2.00000E+00",
     R"(
000001: S: B0056[000000,000000008,0043]: Generic Response Blockette
        0560043040030040001 1.00000E+00 2.00000E+00
        stage      = 4
        iunits     = 3
        ounits     = 4
        ncorners   = 1
        corners    = UNDEFINED
)"},

    {57, 'S', false,
     "05"
     "2.0000E+02"
     "00010"
     "00003"
     " 1.2500E-01"
     "-1.2500E-01",
     R"(
000001: S: B0057[000000,000000008,0051]: Decimation Blockette
        0570051052.0000E+020001000003 1.2500E-01-1.2500E-01
        stage      = 5
        isamprate  = 200.000000
        decfac     = 10
        decoff     = 3
        delay      = 0.125000
        correction = -0.125000
)"},

    {58, 'S', true,
     "00"
     " 2.40000E+03"
     " 2.00000E-02"
     "01"
     " 1.00000E+00 2.00000E+002021,075~",
     R"(
000001: S: B0058[000000,000000008,0068]: Channel Sensitivity/Gain Blockette
        058006800 2.40000E+03 2.00000E-0201 1.00000E+00 2.00000E+002021,
        075~
        stage      = 0
        sens       = 2400.000000
        freq       = 0.020000
        nhistories = 1
        histories  = UNDEFINED
)"},

    {59, 'S', false,
     "2021,075,01:02:03~"
     "2021,076~"
     "0013"
     "000000",
     R"(
000001: S: B0059[000000,000000008,0044]: Channel Comment Blockette
        05900442021,075,01:02:03~2021,076~0013000000
        time       = 2021:075:01:02:03
        endtime    = 2021:076:00:00:00
        cid        = 13
        level      = 0
)"},

    {60, 'S', false,
     "02"
     "01"
     "02"
     "0023"
     "0028"
     "02"
     "01"
     "0021",
     R"(
000001: S: B0060[000000,000000008,0029]: Response Reference Blockette
        06000290201020023002802010021
        nstages    = 2
        stages[0000].stage      = 1
        stages[0000].nresps     = 2
        stages[0000].resps[0000] = 23
        stages[0000].resps[0001] = 28
        stages[0001].stage      = 2
        stages[0001].nresps     = 1
        stages[0001].resps[0000] = 21
)"},

    {61, 'S', false,
     "06"
     "FIR_B~"
     "A"
     "005"
     "005"
     "0001"
     " 1.0000000E+00",
     R"(
000001: S: B0061[000000,000000008,0040]: FIR Response Blockette
        061004006FIR_B~A0050050001 1.0000000E+00
        stage      = 6
        name       = FIR_B
        sym        = A
        iunits     = 5
        ounits     = 5
        ncoefs     = 1
        coefs[0000] = 1.000000
)"},

    {62, 'S', false,
     "P"
     "07"
     "003"
     "004"
     "M"
     "A"
     " 1.00000E-03"
     " 5.00000E+01"
     "-1.00000E+01"
     " 1.00000E+01"
     " 2.00000E-02"
     "001"
     " 1.50000E+00"
     " 1.00000E-01",
     R"(
000001: S: B0062[000000,000000008,0105]: Response (Polynomial) Blockette
        0620105P07003004MA 1.00000E-03 5.00000E+01-1.00000E+01 1.00000E+
        01 2.00000E-02001 1.50000E+00 1.00000E-01
        tran       = P
        stage      = 7
        iunits     = 3
        ounits     = 4
        poly       = M
        funits     = A
        lfreq      = 0.001000
        ufreq      = 50.000000
        lappr      = -10.000000
        uappr      = 10.000000
        err        = 0.020000
        ncoefs     = 1
        coefscoef       = 1.500000
        coefscoef_err   = 0.100000
)"},

    {70, 'T', false,
     "E"
     "2021,075~"
     "2021,076~",
     R"(
000001: T: B0070[000000,000000008,0026]: Time Span Identifier Blockette
        0700026E2021,075~2021,076~
        flag       = E
        time       = 2021:075:00:00:00
        endtime    = 2021:076:00:00:00
)"},

    {71, 'T', false,
     "2021,075,01:02:03~"
     "05"
     "-08.250000"
     "+115.500000"
     "0033.25"
     "002"
     "06.20"
     "MW~"
     "05"
     "05.75"
     "mb~"
     "06"
     "024"
     "280"
     "Flores Sea~",
     R"(
000001: T: B0071[000000,000000008,0095]: Hypocenter Information Blockette
        07100952021,075,01:02:03~05-08.250000+115.5000000033.2500206.20M
        W~0505.75mb~06024280Flores Sea~
        time       = 2021:075:01:02:03
        hypo_sid   = 5
        lat        = -8.250000
        lon        = 115.500000
        depth      = 33.250000
        nmags      = 2
        mags[0000].magnitude  = 6.200000
        mags[0000].type       = MW
        mags[0000].source_sid = 5
        mags[0001].magnitude  = 5.750000
        mags[0001].type       = mb
        mags[0001].source_sid = 6
        sregion    = 24
        sloc       = 280
        region     = Flores Sea
)"},

    {72, 'T', false,
     "DYNG "
     "  "
     "BHZ"
     "2021,075,01:03:04~"
     "1.5000E+02"
     "2.0000E+00"
     "1.0000E+01"
     "P~"
     "05"
     "XX",
     R"(
000001: T: B0072[000000,000000008,0071]: Event Phases Blockette
        0720071DYNG   BHZ2021,075,01:03:04~1.5000E+022.0000E+001.0000E+0
        1P~05XX
        sta        = DYNG
        loc        =
        chan       = BHZ
        time       = 2021:075:01:03:04
        amp        = 150.000000
        per        = 2.000000
        snr        = 10.000000
        phase      = P
        source_sid = 5
        net        = XX
)"},

    {73, 'T', true,
     "0001"
     "DYNG 00BHZ2021,075~00001201",
     R"(
000001: T: B0073[000000,000000008,0038]: Time Span Data Start Index Blockette
        07300380001DYNG 00BHZ2021,075~00001201
        nsegs      = 1
        segs       = UNDEFINED
)"},

    {74, 'T', false,
     "DYNG "
     "00"
     "BHZ"
     "2021,075~"
     "000012"
     "01"
     "2021,076~"
     "000020"
     "02"
     "002"
     "2021,075,06~"
     "000014"
     "00"
     "2021,075,12~"
     "000016"
     "01"
     "XX",
     R"(
000001: T: B0074[000000,000000008,0096]: Time Series Index Blockette
        0740096DYNG 00BHZ2021,075~000012012021,076~000020020022021,075,0
        6~000014002021,075,12~00001601XX
        sta        = DYNG
        loc        = 00
        chan       = BHZ
        time       = 2021:075:00:00:00
        dseq       = 12
        sseq       = 1
        endtime    = 2021:076:00:00:00
        enddseq    = 20
        endsseq    = 2
        naccels    = 2
        accels[0000].time       = 2021:075:06:00:00
        accels[0000].dseq       = 14
        accels[0000].sseq       = 0
        accels[0001].time       = 2021:075:12:00:00
        accels[0001].dseq       = 16
        accels[0001].sseq       = 1
        net        = XX
)"},

};

constexpr Time kTime = {2021, 75, 12, 30, 15, 500};

const Calibration kCalibration = {
    .begin = kTime, .steps = 4, .flags = 5, .duration = 600000, .interval = 70000, .period = 2.5F,
    .amplitude = 1.5F, .channel = "BC0", .reference_amplitude = 3, .coupling = "Capacitive",
    .rolloff = "3DB@10Hz", .noise = "White"};

DataRecord data_record() { return {.sta = "DYNGA", .loc = "00", .chan = "BHZ", .net = "XX", .time = kTime}; }

const std::vector<DataCase> kDataCases = {
    {data_record().b100(20.5F, 3), 12,
     R"(
           B0100[000001,000000000,0012]: Sample Rate Blockette
        0064000041a4000003000000
        samprate   = 20.500000
        flags      = 3
)"},

    {data_record().b200(Detection{.amplitude = 2.5F, .period = 0.5F, .background = 1.25F, .flags = 7,
                            .onset = kTime, .detector = "STA-LTA"}), 52,
     R"(
           B0200[000001,000000000,0052]: Generic Event Detection Blockette
        00c80000402000003f0000003fa00000070007e5004b0c1e0f0001f45354412d
        4c54412020202020202020202020202020202020
        amp        = 2.500000
        per        = 0.500000
        noise      = 1.250000
        flags      = 7
        res1       = 0
        time       = 2021:075:12:30:15
        name       = STA-LTA
)"},

    {data_record().b201(Detection{.amplitude = 2.5F, .period = 0.5F, .background = 1.25F, .flags = 7,
                            .onset = kTime, .detector = "STA-LTA",
                            .signal_to_noise = {1, 2, 3, 4, 5, 255}, .lookback = 8, .algorithm = 9}), 60,
     R"(
           B0201[000001,000000000,0060]: Murdock Event Detection Blockette
        00c90000402000003f0000003fa00000070007e5004b0c1e0f0001f401020304
        05ff08095354412d4c54412020202020202020202020202020202020
        amp        = 2.500000
        per        = 0.500000
        noise      = 1.250000
        flags      = 7
        res1       = 0
        time       = 2021:075:12:30:15
        snr1       = 1
        snr2       = 2
        snr3       = 3
        snr4       = 4
        snr5       = 5
        snr6       = 255
        lookback   = 8
        picka      = 9
        name       = STA-LTA
)"},

    {data_record().b300(kCalibration), 60,
     R"(
           B0300[000001,000000000,0060]: Step Calibration Blockette
        012c000007e5004b0c1e0f0001f40405000927c0000111703fc0000042433000
        00000003436170616369746976652020334442403130487a20202020
        time       = 2021:075:12:30:15
        nsteps     = 4
        flags      = 5
        step_duration = 600000
        itvl_duration = 70000
        amp        = 1.500000
        chan       = BC0
        res1       = 0
        ramp       = 3
        coupling   = Capacitive
        rolloff    = 3DB@10Hz
)"},

    {data_record().b310(kCalibration), 60,
     R"(
           B0310[000001,000000000,0060]: Sine Calibration Blockette
        0136000007e5004b0c1e0f0001f40005000927c0402000003fc0000042433000
        00000003436170616369746976652020334442403130487a20202020
        time       = 2021:075:12:30:15
        res1       = 0
        flags      = 5
        cal_duration = 600000
        per        = 2.500000
        amp        = 1.500000
        chan       = BC0
        res2       = 0
        ramp       = 3
        coupling   = Capacitive
        rolloff    = 3DB@10Hz
)"},

    {data_record().b320(kCalibration), 64,
     R"(
           B0320[000001,000000000,0064]: Pseudo-random Calibration Blockette
        0140000007e5004b0c1e0f0001f40005000927c03fc000004243300000000003
        436170616369746976652020334442403130487a202020205768697465202020
        time       = 2021:075:12:30:15
        res1       = 0
        flags      = 5
        cal_duration = 600000
        amp        = 1.500000
        chan       = BC0
        res2       = 0
        ramp       = 3
        coupling   = Capacitive
        rolloff    = 3DB@10Hz
        ntype      = White
)"},

    {data_record().b390(kCalibration), 28,
     R"(
           B0390[000001,000000000,0028]: Generic Calibration Blockette
        0186000007e5004b0c1e0f0001f40005000927c03fc0000042433000
        time       = 2021:075:12:30:15
        res1       = 0
        flags      = 5
        cal_duration = 600000
        amp        = 1.500000
        chan       = BC0
)"},

    {data_record().b395(kTime), 16,
     R"(
           B0395[000001,000000000,0016]: Calibration Abort Blockette
        018b000007e5004b0c1e0f0001f40000
        endtime    = 2021:075:12:30:15
)"},

    {data_record().b400(45.0F, 0.25F, 65535), 16,
     R"(
           B0400[000001,000000000,0016]: Beam Blockette
        01900000423400003e800000ffff0000
        azimuth    = 45.000000
        slowness   = 0.250000
        config     = 65535
)"},

    {data_record().b405({12, 13}), 8,
     R"(
           B0405[000001,000000000,0008]: Beam Delay Blockette
        01950000000c000d
        delay      = 12
)"},

    {data_record().b500(Timing{.vco_percent = 50.5F, .exception = kTime,
                            .microseconds = 99, .quality_percent = 100, .count = 2147483648U,
                            .type = "Missing", .model = "Clock 1", .status = "Locked"}), 200,
     R"(
           B0500[000001,000000000,0200]: Timing Blockette
        01f40000424a000007e5004b0c1e0f0001f46364800000004d697373696e6720
        2020202020202020436c6f636b20312020202020202020202020202020202020
        20202020202020204c6f636b6564202020202020202020202020202020202020
        2020202020202020202020202020202020202020202020202020202020202020
        2020202020202020202020202020202020202020202020202020202020202020
        2020202020202020202020202020202020202020202020202020202020202020
        2020202020202020
        vco        = 50.500000
        time       = 2021:075:12:30:15
        usec       = 99
        qual       = 100
        count      = -2147483648
        type       = Missing
        model      = Clock 1
        status     = Locked
)"},

    {data_record().b1000(11, 1, 9), 8,
     R"(
           B1000[000001,000000000,0008]: Data Only SEED Blockette
        03e800000b010900
        format     = 11
        order      = 1
        dlenp      = 9
)"},

    {data_record().b1001(100, 99, 7), 8,
     R"(
           B1001[000001,000000000,0008]: Data Extension Blockette
        03e9000064630007
        qual       = 100
        usec       = 99
        res1       = 0
        fcount     = 7
)"},

    {data_record().b2000(Opaque{.record = 70000, .word_order = 1, .flags = 2,
                            .headers = {"FIRST", "SECOND"}, .data = "xyz"}), 31,
     R"(
           B2000[000001,000000000,0031]: Variable Length Opaque Data Blockette
        07d00000001f001c0001117001020246495253547e5345434f4e447e78797a
        length     = 31
        offset     = 28
        record     = 70000
        order      = 1
        flags      = 2
        nheaders   = 2
        headers[0000] = FIRST
        headers[0001] = SECOND
)"},

};
// clang-format on

constexpr std::string_view kFixedSection = R"(
000001: R: BDATA[000000,000000000,0000]: Fixed Section of Data Header
        303030303031522044594e4741303042485a585807e5004b0c1e0f0001f403e8
        ffec800081ff0700fffe1dc000000000
        sta        = DYNGA
        loc        = 00
        chan       = BHZ
        net        = XX
        time       = 2021:075:12:30:15
        nsamp      = 1000
        srate_factor = -20
        srate_multiplier = -32768
        activity_flags = 129
        clock_flags = 255
        quality_flags = 7
        nblks      = 0
        tcor       = -123456
        data_offset = 0
        blk_offset = 0
)";

// The listing at level 1 after a newline, without blanks at the ends of its lines.
std::string listing_of(const SDBlk *block) {
  LogCapture log;
  sdblk_printblk(block, "", 1);
  std::string trimmed = "\n";
  for (const char c : log.take()) {
    if (c == '\n') trimmed.erase(trimmed.find_last_not_of(' ') + 1);
    trimmed += c;
  }
  return trimmed;
}

std::string volume_of(const ControlCase &c) {
  return VolumeWriter(1024).control(c.record_type, ControlBlockette(c.type).raw(c.body)).bytes();
}

DataRecord record_of(const DataCase &c) {
  DataRecord record = c.record;
  record.forced_data_offset = 48 + c.length;
  return record;
}

// After the listing of the fixed section, with the newline before it.
std::string chained_listing(const SDBlk *block) {
  const std::string text = listing_of(block);
  return text.substr(text.find("\n           B"));
}

// Copies of the catalogue's definitions, for which nothing is worked out beforehand.
class HandMade {
 public:
  const SDBlkFieldDef *copy(const SDBlkFieldDef *fields, std::int32_t count) {
    std::vector<SDBlkFieldDef> &copies = arrays_.emplace_back(fields, fields + count);
    for (SDBlkFieldDef &field : copies) {
      if (field.sub != nullptr) field.sub = copy(field.sub, field.nsub);
    }
    return copies.data();
  }
  const SDBlkDef *copy(const SDBlkDef *def) {
    SDBlkDef &made = defs_.emplace_back(*def);
    made.fields = copy(def->fields, def->nfields);
    return &made;
  }

 private:
  std::deque<std::vector<SDBlkFieldDef>> arrays_;
  std::deque<SDBlkDef> defs_;
};

TEST(Listing, OfEveryControlBlockette) {
  for (const ControlCase &c : kControlCases) {
    const LogCapture log;
    BlockReader reader(volume_of(c));
    SDBlk *block = reader.next();
    // The types 5, 8 and 10 come decoded.
    EXPECT_EQ(sdblk_unstuffblk(block), c.fails ? -1 : 0) << "B" << c.type;
    EXPECT_EQ(listing_of(block), c.listing);
  }
}

TEST(Listing, OfEveryDataBlockette) {
  for (const DataCase &c : kDataCases) {
    BlockReader reader(record_of(c).bytes(512));
    EXPECT_EQ(chained_listing(reader.decode_next()), c.listing);
  }
}

TEST(Listing, OfTheFixedSection) {
  DataRecord record = data_record();
  record.quality = 'R';
  record.samples = 1000;
  record.rate_factor = -20;
  record.rate_multiplier = -32768;
  record.activity_flags = 129;
  record.clock_flags = 255;
  record.quality_flags = 7;
  record.time_correction = -123456;
  BlockReader reader(record.bytes(512));
  EXPECT_EQ(listing_of(reader.decode_next()), kFixedSection);
}

TEST(Listing, CoversTheCatalogue) {
  std::vector<std::int32_t> types = {99};
  for (const ControlCase &c : kControlCases) types.push_back(c.type);
  for (const DataCase &c : kDataCases) {
    types.push_back(static_cast<std::int32_t>(c.record.chain[0].type));
  }
  std::sort(types.begin(), types.end());
  std::vector<std::int32_t> expected;
  for (const SDBlkDef &def : seed_blkdefs) expected.push_back(def.type);
  EXPECT_EQ(types, expected);
}

TEST(Listing, OfDefinitionsMadeByHandIsTheSame) {
  for (const ControlCase &c : kControlCases) {
    const LogCapture log;
    HandMade made;
    BlockReader reader(volume_of(c));
    SDBlk *block = reader.next();
    block->blkdef = made.copy(block->blkdef);
    EXPECT_EQ(sdblk_unstuffblk(block), c.fails ? -1 : 0) << "B" << c.type;
    EXPECT_EQ(listing_of(block), c.listing);
  }
}

TEST(Listing, OfFixedSectionsMadeByHandIsTheSame) {
  for (const DataCase &c : kDataCases) {
    HandMade made;
    BlockReader reader(record_of(c).bytes(512));
    SDBlk *block = reader.next();
    const std::string expected = [&] {
      sdblk_unstuffblk(block);
      return listing_of(block);
    }();
    block->blkdef = made.copy(block->blkdef);
    EXPECT_EQ(sdblk_unstuffblk(block), 0);
    EXPECT_EQ(listing_of(block), expected);
  }
}

}  // namespace

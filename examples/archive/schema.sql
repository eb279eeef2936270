-- An archive as tables.  Codes that are absent are empty; a channel without data or a station
-- without channels has NULL where there is nothing.  Times are texts, which compare as times do.
CREATE TABLE volumes (
  file TEXT PRIMARY KEY,
  bytes INTEGER,
  modified TEXT,
  content TEXT,
  label TEXT,
  organization TEXT,
  data_start TEXT,
  data_end TEXT,
  data_records INTEGER,
  samples INTEGER,
  skipped_bytes INTEGER,
  notes TEXT -- as JSON: how many of each cause
);

-- A row a channel epoch, or one for a station without channels.
CREATE TABLE epochs (
  file TEXT,
  network TEXT,
  station TEXT,
  location TEXT,
  channel TEXT,
  start_time TEXT,
  end_time TEXT, -- NULL: still open
  station_start TEXT,
  station_end TEXT,
  sample_rate REAL,
  sensitivity REAL,
  content TEXT -- all that the volume says of the epoch, as JSON, but for its place in the volume
);
CREATE INDEX epochs_by_file ON epochs (file);
CREATE INDEX epochs_by_channel ON epochs (network, station, location, channel, start_time);

-- A row a continuous stretch of data.
CREATE TABLE segments (
  file TEXT,
  network TEXT,
  station TEXT,
  location TEXT,
  channel TEXT,
  quality TEXT,
  start_time TEXT,
  end_time TEXT, -- of the last sample
  sample_rate REAL,
  samples INTEGER,
  records INTEGER,
  timing_quality INTEGER
);
CREATE INDEX segments_by_file ON segments (file);
CREATE INDEX segments_by_channel ON segments (network, station, location, channel, start_time);

-- Files that the last run could not read.
CREATE TABLE unread (file TEXT PRIMARY KEY, text TEXT);

-- Where lines wait until they are taken apart.
CREATE TABLE lines (line TEXT);

-- Channels whose epoch begins before their station's or ends after it.
SELECT file, network, station, location, channel, start_time, end_time, station_start, station_end
FROM epochs
WHERE channel IS NOT NULL
  AND (coalesce(start_time, '') < coalesce(station_start, '')
       OR coalesce(end_time, 'open') > coalesce(station_end, 'open'))
ORDER BY network, station, location, channel, start_time, file;

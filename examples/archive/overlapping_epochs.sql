-- Epochs of a channel that overlap.  An epoch that several volumes give alike is one.
WITH epoch AS (
  SELECT DISTINCT network, station, location, channel, coalesce(start_time, '') AS begins,
                  coalesce(end_time, 'open') AS ends -- after every time, as letters sort after digits
  FROM epochs WHERE channel IS NOT NULL
)
SELECT network, station, location, channel, a.begins, a.ends, b.begins, b.ends
FROM epoch AS a JOIN epoch AS b USING (network, station, location, channel)
WHERE (a.begins, a.ends) < (b.begins, b.ends) AND b.begins < a.ends
ORDER BY network, station, location, channel, a.begins, a.ends, b.begins, b.ends;

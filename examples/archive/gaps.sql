-- Gaps of a day and more in the data of a channel, over all files.  The time between two samples is
-- no gap; half of it is the tolerance.
WITH stretch AS (
  SELECT network, station, location, channel, start_time, sample_rate,
         max(end_time) OVER (PARTITION BY network, station, location, channel
                             ORDER BY start_time, end_time
                             ROWS BETWEEN UNBOUNDED PRECEDING AND 1 PRECEDING) AS before
  FROM segments
),
gap AS (
  SELECT *, (julianday(start_time) - julianday(before)) * 86400 - 1 / sample_rate AS seconds
  FROM stretch
)
SELECT network, station, location, channel, before, start_time, round(seconds / 86400, 3) AS days
FROM gap WHERE seconds >= 86400 - 0.5 / sample_rate
ORDER BY network, station, location, channel, start_time;

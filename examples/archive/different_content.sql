-- Epochs that begin at the same time in two volumes, which do not say the same of them: the first
-- volume with each content, and what differs.
WITH said AS (
  SELECT min(file) AS file, network, station, location, channel, coalesce(start_time, '') AS begins,
         content
  FROM epochs WHERE channel IS NOT NULL
  GROUP BY network, station, location, channel, begins, content
)
SELECT network, station, location, channel, begins, a.file, b.file,
       (SELECT group_concat(one.key, ' ')
        FROM json_each(a.content) AS one JOIN json_each(b.content) AS other USING (key)
        WHERE one.value IS NOT other.value) AS differs
FROM said AS a JOIN said AS b USING (network, station, location, channel, begins)
WHERE (a.file, a.content) < (b.file, b.content) AND a.file <> b.file
ORDER BY network, station, location, channel, begins, a.file, b.file;

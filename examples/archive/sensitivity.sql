-- Sensitivities that are not the product of the stages' gains within 5 %.  Epochs in which one of
-- these is not known have no answer.
WITH gain AS (
  SELECT epochs.rowid AS epoch, json_extract(blockette.value, '$.fields.sens') AS gain
  FROM epochs, json_each(content, '$.stages') AS stage,
       json_each(stage.value, '$.blockettes') AS blockette
  WHERE json_extract(stage.value, '$.stage') <> 0
    AND json_extract(blockette.value, '$.type') = 58
),
product AS (
  SELECT epoch,
         CASE WHEN min(abs(gain)) = 0 THEN 0.0
              WHEN sum(gain < 0) % 2 = 1 THEN -exp(sum(ln(abs(gain))))
              ELSE exp(sum(ln(abs(gain)))) END AS gains
  FROM gain GROUP BY epoch HAVING count(gain) = count(*)
)
SELECT file, network, station, location, channel, start_time, sensitivity,
       CAST(printf('%.9g', gains) AS REAL) AS gains
FROM epochs JOIN product ON epoch = epochs.rowid
WHERE abs(sensitivity - gains) > 0.05 * abs(gains)
ORDER BY network, station, location, channel, start_time, file;

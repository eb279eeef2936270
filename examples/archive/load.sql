-- Takes volumes.json, stations.json and segments.json of the current folder into the tables.  What
-- was known of the files in volumes.json is replaced; what is gone goes.  A file that is not there
-- leaves all as it was.
--
-- A line is a row of one column: no line of JSON holds the byte that separates columns.
.bail on
.mode ascii
.separator "\037" "\n"
BEGIN;

.import volumes.json lines
CREATE TEMP TABLE told AS
  SELECT DISTINCT json_extract(line, '$.file') AS file FROM lines;
DELETE FROM volumes WHERE file IN (SELECT file FROM told);
DELETE FROM epochs WHERE file IN (SELECT file FROM told);
DELETE FROM segments WHERE file IN (SELECT file FROM told);
DELETE FROM unread;
INSERT OR REPLACE INTO volumes
  SELECT json_extract(line, '$.file'), json_extract(line, '$.bytes'),
         json_extract(line, '$.modified'), json_extract(line, '$.content'),
         json_extract(line, '$.label'), json_extract(line, '$.organization'),
         json_extract(line, '$.data_start'), json_extract(line, '$.data_end'),
         json_extract(line, '$.data_records'), json_extract(line, '$.samples'),
         json_extract(line, '$.skipped_bytes'), json_extract(line, '$.notes')
  FROM lines WHERE json_extract(line, '$.kind') = 'volume';
INSERT OR REPLACE INTO unread
  SELECT json_extract(line, '$.file'), json_extract(line, '$.text')
  FROM lines WHERE json_extract(line, '$.kind') = 'error';
DELETE FROM lines;

-- The same response may stand at another place, or in the dictionary: block and from are no content.
.import stations.json lines
INSERT INTO epochs
  SELECT json_extract(line, '$.file'),
         coalesce(json_extract(line, '$.network'), ''),
         coalesce(json_extract(line, '$.station'), ''),
         coalesce(json_extract(line, '$.location'), ''),
         json_extract(line, '$.channel'),
         json_extract(line, '$.start'), json_extract(line, '$.end'),
         json_extract(line, '$.station_start'), json_extract(line, '$.station_end'),
         json_extract(line, '$.sample_rate'), json_extract(line, '$.sensitivity.value'),
         json_set(json_remove(line, '$.kind', '$.file'), '$.stages',
                  (SELECT json_group_array(json_object('stage', json_extract(stage.value, '$.stage'),
                     'blockettes', (SELECT json_group_array(json_remove(value, '$.block', '$.from'))
                                    FROM json_each(stage.value, '$.blockettes'))))
                   FROM json_each(line, '$.stages') AS stage))
  FROM lines WHERE json_extract(line, '$.kind') = 'epoch';
DELETE FROM lines;

.import segments.json lines
INSERT INTO segments
  SELECT json_extract(line, '$.file'), json_extract(line, '$.network'),
         json_extract(line, '$.station'), json_extract(line, '$.location'),
         json_extract(line, '$.channel'), json_extract(line, '$.quality'),
         json_extract(line, '$.start'), json_extract(line, '$.end'),
         json_extract(line, '$.sample_rate'), json_extract(line, '$.samples'),
         json_extract(line, '$.records'), json_extract(line, '$.timing_quality')
  FROM lines WHERE json_extract(line, '$.kind') = 'segment';
DELETE FROM lines;
COMMIT;

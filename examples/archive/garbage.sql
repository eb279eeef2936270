-- Files with bytes that are no part of any record, and how many.
SELECT file, skipped_bytes, bytes FROM volumes WHERE skipped_bytes > 0 ORDER BY file;

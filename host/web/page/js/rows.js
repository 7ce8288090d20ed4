// Rows as the interface sends them: [time, value, ...], null where the log of the row lacks the variable.

// Rows of the same time, which are of several logs, become one row with the values of all.
export function merged(rows) {
  const result = [];
  for (const row of rows) {
    const last = result.at(-1);
    if (last?.[0] !== row[0]) result.push(row.slice());
    else
      row.forEach((value, i) => {
        if (value !== null) last[i] = value;
      });
  }
  return result;
}

// The rows that lack no variable which another one has: without those of summaries, which are between the samples.
export function fullest(rows) {
  const sizes = rows.map(row => row.filter(value => value !== null).length);
  const most = Math.max(...sizes);
  return rows.filter((_, i) => sizes[i] === most);
}

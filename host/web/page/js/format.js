// Numbers and sizes as text.

const kFloatDigits = 9;

// A value as the interface sends it: a number, "nan", "inf", "-inf", or null. That of a log is shown as it is; what has
// more digits than a float was calculated, and seven of them are meant.
export function value(raw) {
  if (raw === null || raw === undefined) return '–';
  if (typeof raw !== 'number') return raw;
  return short(raw === Number(raw.toPrecision(kFloatDigits)) ? raw : Number(raw.toPrecision(7)));
}

// A number without digits that say nothing: 1e+20 in place of 100000000000000000000.
export function short(number) {
  const text = String(number);
  return text.length > kFloatDigits + 4 ? number.toExponential() : text;
}

const kSteadyDigits = 6;

// A value of a variable among its newest ones, so that its digits keep their places when it changes: all have the
// decimals of the greatest one, or none if all are whole. `greatest` is without sign.
export function steady(raw, { greatest, isWhole }) {
  if (typeof raw !== 'number') return value(raw);
  const exponent = greatest > 0 ? Math.floor(Math.log10(greatest)) : 0;
  if (isWhole && exponent < 10) return String(raw);
  if (exponent < -4 || exponent > 8) return raw.toExponential(4);
  return raw.toFixed(Math.max(0, kSteadyDigits - 1 - exponent));
}

export const withUnit = (raw, unit) => value(raw) + (unit && value(raw) !== '–' ? ' ' + unit : '');

// 1 234 567; a count can be not known yet.
export const count = number => String(number ?? '–').replace(/\B(?=(\d{3})+$)/g, '\u202f');

const kSizes = ['B', 'kB', 'MB', 'GB', 'TB'];
export function bytes(number) {
  if (number === null || number === undefined) return 'not known';
  let size = 0;
  while (number >= 1000 && size < kSizes.length - 1) {
    number /= 1000;
    size++;
  }
  return (size && number < 100 ? number.toFixed(1) : Math.round(number)) + ' ' + kSizes[size];
}

export const plural = (number, one, many = one + 's') => `${count(number)} ${number === 1 ? one : many}`;

// A text of a place that has space for `length` characters.
export const cut = (text, length) => (text.length > length ? text.slice(0, length) + '…' : text);

namespace planted_forms {
inline int HeaderNarrow(long value) { return value; }
inline int HeaderString(const char* a, const char* b) {
  if (sizeof(a) / sizeof(a[0]) == 3) return 1;
  std::string s = a;
  if (s.size() == 0) return 1;
  return b == 0;
}
}  // namespace planted_forms

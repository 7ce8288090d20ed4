/* A module without the export. NEEDED is a function it calls: one that nobody has keeps it from loading. */
extern int NEEDED(void);

int SomethingElse(void);
int SomethingElse(void) { return NEEDED(); }

#ifdef __cplusplus
extern "C" {
#endif

/// Whether the X server that DISPLAY names answers. If it does, `hasWindowManager` says whether a window
/// manager runs there. If not, `name` is the name that was tried (cut to `size`).
int SNTProbeDisplay(int* hasWindowManager, char* name, unsigned long size);

/// From now on a lost connection to the X server ends the process with a line on standard error and exit
/// status 0, the program's only one. Left to itself, Xlib ends it by exit(3), which takes down what other
/// threads are still using.
void SNTEndWithDisplay(void);

#ifdef __cplusplus
}
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// Whether the X server that DISPLAY names answers. When it does, `hasWindowManager` says whether a window
/// manager runs there. When not, the name that was tried is in `name` (cut to `size`).
int SNTProbeDisplay(int* hasWindowManager, char* name, unsigned long size);

#ifdef __cplusplus
}
#endif

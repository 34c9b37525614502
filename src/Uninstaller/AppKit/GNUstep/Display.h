#ifdef __cplusplus
extern "C" {
#endif

/// Whether the X server that DISPLAY names answers. If it does, `hasWindowManager` says whether a window
/// manager runs there. If not, `name` is the name that was tried (cut to `size`).
int SNTProbeDisplay(int* hasWindowManager, char* name, unsigned long size);

#ifdef __cplusplus
}
#endif

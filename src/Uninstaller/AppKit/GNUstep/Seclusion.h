#ifdef __cplusplus
extern "C" {
#endif

/// Takes the process out of the GNUstep desktop, which a program that is gone in a minute has no use for: it
/// looks at no command line and no saved settings, offers no services, starts no server processes (gdnc,
/// make_services), waits for none, and leaves no files behind. To be called once, before anything else of
/// GNUstep is used.
void SNTSecludeProcess(void);

#ifdef __cplusplus
}
#endif

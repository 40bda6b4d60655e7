// A target needs a source. See Precompiled.h.

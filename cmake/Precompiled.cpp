// The precompiled header is built with this file.

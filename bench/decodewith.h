#pragma once

/// Ends the program when there is no such library.
void *openLibrary(const char *name);

bool decodeByGraphicsMagick(const char *path);

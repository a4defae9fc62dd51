#pragma once

class QUrl;

/// True for an address of the web: http or https, with a host.
bool isWebAddress(const QUrl &address);

/// Opens an address of the web in the browser that the user has chosen. False for any other address, and when nothing
/// on this system opens it.
bool openWebAddress(const QUrl &address);

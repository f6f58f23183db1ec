// Who the program is: organisation, name and version, and the icon of its windows.
#pragma once

/// Sets the identity of the running QApplication.
void setIdentity();

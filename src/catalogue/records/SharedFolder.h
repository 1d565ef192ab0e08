// The folder of the records that all programs and users of the machine share.
#pragma once

#include "platform/types.h"

// Makes the folder, open to every user of the machine. The result is written to the trace.
void CreateSharedFolder(const WideString& path);

// Opens a certificate file to every user of the machine; whether that works is not looked at.
void ShareCertificateFile(const WideString& path);

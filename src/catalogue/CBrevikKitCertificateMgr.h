// The certificate manager that queries make.
#pragma once

#include "catalogue/CCertificateMgr.h"

class CBrevikKitCertificateMgr : public CCertificateMgr {};

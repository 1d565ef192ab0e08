// The certificate manager that queries make.
#pragma once

#include "catalogue/manager/CCertificateMgr.h"

class CBrevikKitCertificateMgr : public CCertificateMgr {};

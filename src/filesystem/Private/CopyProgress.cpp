#include "filesystem/Private/CopyProgress.h"

#include "text/Texts.h"

namespace FileSystem {

void BeginCopy(Tickler& tickler, const FilePath& source) {
    tickler.SetBase(0.0);
    tickler.SetScale(1.0);
    tickler.SetProgress(0.0);
    VelmarTextArgs message(Texts::copying);
    message.push_back(source);
    tickler.SetMessage(message);
}

}  // namespace FileSystem

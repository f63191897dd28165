#pragma once

namespace vireo {

struct MethodCall;

void handleStartDownloadWithFileType(MethodCall& call);
void handleStartDownloadWithFileTypeAndCallback(MethodCall& call);
void handleStartDownloadWithManyParams(MethodCall& call);
void handleStartDownloadWithManyParamsAndCallback(MethodCall& call);
void handleRequestCurrentDownloadStatus(MethodCall& call);
void handleRefreshPictureClips(MethodCall& call);

}  // namespace vireo

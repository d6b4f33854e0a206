// The files of this folder, as the build embeds them.
#ifndef KIT_HOST_REPORT_PAGE_PAGE_FILES_H_
#define KIT_HOST_REPORT_PAGE_PAGE_FILES_H_

namespace kit::host {

extern const char kHeadHtml[];
extern const char kPageHtml[];
extern const char kPageCss[];
extern const char kPageJs[];
extern const char kPartsJs[];
extern const char kStartJs[];
extern const char kFleetHtml[];
extern const char kFleetCss[];
extern const char kFleetJs[];

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_PAGE_PAGE_FILES_H_

#ifndef CVAS_RESOURCE_IDS_H
#define CVAS_RESOURCE_IDS_H
/* Resource identifiers shared by the code and the resource scripts: plain
   defines, which both the C++ compiler and the resource compiler read. */

/* The submitted-tracks list: image 0 marks a failed submission, image 1 a
   successful one. */
#define IDI_SUBMIT_FAILED 228
#define IDI_SUBMIT_OK 222

/* The options sheet and its pages. Icon 201 is the sheet's and the About
   page's; 214 is the image of the Logging page's "..." buttons; 232 and 300
   are the Replace page's up and down buttons. */
#define IDI_OPTIONS 201
#define IDI_OPEN_FILE 214
#define IDI_MOVE_UP 232
#define IDI_MOVE_DOWN 300

#define IDD_OPTIONS_MAIN 205
#define IDD_OPTIONS_LOGGING 207
#define IDD_OPTIONS_REPLACE 221
#define IDD_OPTIONS_FILTER 305
#define IDD_OPTIONS_BUDDY 243
#define IDD_OPTIONS_ADVANCED 210
#define IDD_OPTIONS_ABOUT 204
#define IDD_REPLACEMENT 241

/* Main */
#define IDC_USER_NAME 202
#define IDC_PASSWORD 203
#define IDC_ENABLED 209
#define IDC_REATTEMPT 215
#define IDC_RUN_AT_START 224
#define IDC_SUBMIT_AT_START 225
/* Logging: the three file names and their "..." buttons */
#define IDC_STATUS_LOG_FILE 213
#define IDC_OPEN_STATUS_LOG 220
#define IDC_FAILED_LOG_FILE 227
#define IDC_OPEN_FAILED_LOG 231
#define IDC_QUEUE_FILE 235
#define IDC_OPEN_QUEUE_FILE 238
/* Replace */
#define IDC_REPLACEMENTS 236
#define IDC_ADD 240
#define IDC_DELETE 242
#define IDC_MODIFY 246
#define IDC_MOVE_UP 249
#define IDC_MOVE_DOWN 250
/* Filter */
#define IDC_FILTER 218
/* Buddy System */
#define IDC_BUDDY_HOTKEY 217
#define IDC_BUDDY_ENABLED 251
/* Advanced: the overrides */
#define IDC_ARTIST 206
#define IDC_ALBUM 208
#define IDC_NAME 211
/* About */
#define IDC_ABOUT_TITLE 226
#define IDC_ABOUT_VERSION 230
#define IDC_ABOUT_LEGAL 234
#define IDC_ABOUT_COMMENTS 239
/* The buddy dialog, its tracks page and the progress window; icon 244 marks
   a track that is in the user's own library. */
#define IDI_IN_LIBRARY 244
#define IDD_BUDDIES 301
#define IDD_BUDDY_TRACKS 245
#define IDD_STATUS 247
#define IDC_BUDDY_TABS 252
#define IDC_STATUS_TEXT 253
#define IDC_BUDDY_NAMES 302
#define IDC_PLAY 304
#define IDC_BUDDY_TRACKS 306

/* The replacement dialog */
#define IDC_REPLACE_THIS 216
#define IDC_WITH_THIS 223

#endif

<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name></name>
    <!-- Folder lists and edit mode -->
    <message id="Select">
        <source>Select</source>
        <extracomment>Navigation-bar button that starts selecting items in a folder.</extracomment>
        <translation>Select</translation>
    </message>
    <message id="Select Items">
        <source>Select Items</source>
        <extracomment>Navigation title while selecting, before anything is selected.</extracomment>
        <translation>Select Items</translation>
    </message>
    <message id=".DICT.ITEMS_SELECTED.%d" numerus="yes">
        <source>%d Items Selected</source>
        <extracomment>Navigation title while selecting. %d is the number of selected items.</extracomment>
        <translation>
            <numerusform>%d Item Selected</numerusform>
            <numerusform>%d Items Selected</numerusform>
        </translation>
    </message>
    <message id="New Folder">
        <source>New Folder</source>
        <extracomment>Toolbar button, and the title of the prompt that names a new folder.</extracomment>
        <translation>New Folder</translation>
    </message>
    <message id="Move">
        <source>Move</source>
        <extracomment>Toolbar button that moves the selected items; also the button that confirms a new folder to move items into.</extracomment>
        <translation>Move</translation>
    </message>
    <message id="Delete">
        <source>Delete</source>
        <extracomment>Toolbar button that deletes the selected items.</extracomment>
        <translation>Delete</translation>
    </message>
    <!-- New folder and move -->
    <message id="Create">
        <source>Create</source>
        <extracomment>Button that creates the folder named in the new-folder prompt.</extracomment>
        <translation>Create</translation>
    </message>
    <message id=".DICT.MOVE_ITEMS.%d" numerus="yes">
        <source>Move %d Items to a New Folder</source>
        <extracomment>Title of the prompt that names a new folder for items being moved. %d is the number of items.</extracomment>
        <translation>
            <numerusform>Move %d Item to a New Folder</numerusform>
            <numerusform>Move %d Items to a New Folder</numerusform>
        </translation>
    </message>
    <message id=".DICT.CANNOT_MOVE_ITEMS.%d" numerus="yes">
        <source>%d items couldn’t be moved.</source>
        <extracomment>%d is the number of items that failed to move.</extracomment>
        <translation>
            <numerusform>%d item couldn’t be moved.</numerusform>
            <numerusform>%d items couldn’t be moved.</numerusform>
        </translation>
    </message>
    <!-- Delete flow -->
    <message id=".DICT.CANNOT_DELETE_ITEMS.%d" numerus="yes">
        <source>%d items couldn’t be deleted.</source>
        <extracomment>%d is the number of items that failed to be deleted.</extracomment>
        <translation>
            <numerusform>%d item couldn’t be deleted.</numerusform>
            <numerusform>%d items couldn’t be deleted.</numerusform>
        </translation>
    </message>
    <!-- Item actions menu -->
    <message id="Rename Item…">
        <source>Rename Item…</source>
        <translation>Rename Item…</translation>
    </message>
    <message id="Share Item…">
        <source>Share Item…</source>
        <translation>Share Item…</translation>
    </message>
    <message id="Move to Folder…">
        <source>Move to Folder…</source>
        <translation>Move to Folder…</translation>
    </message>
    <message id="Cancel">
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <!-- Keeping items offline -->
    <message id="Keep Offline">
        <source>Keep Offline</source>
        <extracomment>Actions menu: download the item and keep it on the device.</extracomment>
        <translation>Keep Offline</translation>
    </message>
    <message id="Remove Download">
        <source>Remove Download</source>
        <extracomment>Actions menu: free up the item’s space on the device; it stays in the cloud.</extracomment>
        <translation>Remove Download</translation>
    </message>
    <message id="Kept offline">
        <source>Kept offline</source>
        <extracomment>Spoken description of a row kept on the device.</extracomment>
        <translation>Kept offline</translation>
    </message>
    <message id="Downloading, %d%%">
        <source>Downloading, %d%%</source>
        <extracomment>Spoken description of a row that downloads; %d is the percentage done.</extracomment>
        <translation>Downloading, %d%%</translation>
    </message>
    <message id="%@ on this device">
        <source>%@ on this device</source>
        <extracomment>Status line: %@ is how much of the drive is on the device, e.g. “1.2 GB”.</extracomment>
        <translation>%@ on this device</translation>
    </message>
    <message id="Couldn’t download “%@”.">
        <source>Couldn’t download “%@”.</source>
        <extracomment>Alert title after Keep Offline failed for one item.</extracomment>
        <translation>Couldn’t download “%@”.</translation>
    </message>
    <message id=".DICT.CANNOT_DOWNLOAD_ITEMS.%d" numerus="yes">
        <source>%d items couldn’t be downloaded.</source>
        <extracomment>Alert title after Keep Offline failed for several items.</extracomment>
        <translation>
            <numerusform>%d item couldn’t be downloaded.</numerusform>
            <numerusform>%d items couldn’t be downloaded.</numerusform>
        </translation>
    </message>
    <message id="“%1$@” is kept offline with the folder “%2$@”.">
        <source>“%1$@” is kept offline with the folder “%2$@”.</source>
        <extracomment>Remove Download of an item inside a folder that is kept offline.</extracomment>
        <translation>“%1$@” is kept offline with the folder “%2$@”.</translation>
    </message>
    <message id="Remove the download of the folder to free up its space.">
        <source>Remove the download of the folder to free up its space.</source>
        <translation>Remove the download of the folder to free up its space.</translation>
    </message>
    <message id="Couldn’t remove the download of “%@”.">
        <source>Couldn’t remove the download of “%@”.</source>
        <translation>Couldn’t remove the download of “%@”.</translation>
    </message>
    <message id="Its changes aren’t in the cloud yet. Connect to the Internet and try again.">
        <source>Its changes aren’t in the cloud yet. Connect to the Internet and try again.</source>
        <extracomment>Remove Download refused offline for an item changed on this device.</extracomment>
        <translation>Its changes aren’t in the cloud yet. Connect to the Internet and try again.</translation>
    </message>
    <!-- Move-target chooser -->
    <message id=".DICT.CHOOSE_FOLDER_FOR_ITEMS.%d" numerus="yes">
        <source>Choose a folder for %d items.</source>
        <extracomment>Line under the move-target chooser's bar. %d is the number of items to move.</extracomment>
        <translation>
            <numerusform>Choose a folder for %d item.</numerusform>
            <numerusform>Choose a folder for %d items.</numerusform>
        </translation>
    </message>
    <message id="Back">
        <source>Back</source>
        <extracomment>Move-target chooser: button that goes up to the folder above.</extracomment>
        <translation>Back</translation>
    </message>
    <message id="Folders">
        <source>Folders</source>
        <extracomment>Move-target chooser: the name a screen reader gives the list of folders.</extracomment>
        <translation>Folders</translation>
    </message>
    <message id="No Folders">
        <source>No Folders</source>
        <extracomment>Move-target chooser: shown in a folder without subfolders.</extracomment>
        <translation>No Folders</translation>
    </message>
    <!-- Status line -->
    <message id=".DICT.ITEMS.%d" numerus="yes">
        <source>%d items</source>
        <extracomment>Number of items in a folder. %d is the count.</extracomment>
        <translation>
            <numerusform>%d item</numerusform>
            <numerusform>%d items</numerusform>
        </translation>
    </message>
    <message id=".DICT.AVAILABLE.%g" numerus="yes">
        <source>%2$@ available</source>
        <extracomment>Free space of the account. %1$g is the amount as a number (it chooses the form), %2$@ the same amount with its unit, such as “3.4 GB”.</extracomment>
        <translation>
            <numerusform>%2$@ available</numerusform>
            <numerusform>%2$@ available</numerusform>
        </translation>
    </message>
    <message id="%1$@, %2$@">
        <source>%1$@, %2$@</source>
        <extracomment>Joins the item count (%1$@) and the free space (%2$@) in the status line.</extracomment>
        <translation>%1$@, %2$@</translation>
    </message>
    <message id="Show as Grid">
        <source>Show as Grid</source>
        <extracomment>Status-bar button that shows the folder's items as a grid of icons.</extracomment>
        <translation>Show as Grid</translation>
    </message>
    <message id="Show as List">
        <source>Show as List</source>
        <extracomment>Status-bar button that shows the folder's items as a list.</extracomment>
        <translation>Show as List</translation>
    </message>
    <message id="Search">
        <source>Search</source>
        <extracomment>Placeholder of the search field above a folder list.</extracomment>
        <translation>Search</translation>
    </message>
    <message id="Name">
        <source>Name</source>
        <extracomment>Sort order of a folder list: by name.</extracomment>
        <translation>Name</translation>
    </message>
    <message id="Date">
        <source>Date</source>
        <extracomment>Sort order of a folder list: newest first.</extracomment>
        <translation>Date</translation>
    </message>
    <message id="Sort by %@">
        <source>Sort by %@</source>
        <extracomment>Accessible name of a folder list's sort button. %@ is the current order, such as “Name”.</extracomment>
        <translation>Sort by %@</translation>
    </message>
    <message id="Search Results">
        <source>Search Results</source>
        <extracomment>Accessible name of the list of search results.</extracomment>
        <translation>Search Results</translation>
    </message>
    <!-- Filename prompts -->
    <message id="Done">
        <source>Done</source>
        <translation>Done</translation>
    </message>
    <message id="Choose a different name.">
        <source>Choose a different name.</source>
        <translation>Choose a different name.</translation>
    </message>
    <message id="Character not allowed in filename">
        <source>Character not allowed in filename</source>
        <extracomment>Shown under the name field while the typed name contains a character that names can’t have.</extracomment>
        <translation>This name contains a character that isn’t allowed.</translation>
    </message>
    <message id="Enter a name for this folder.">
        <source>Enter a name for this folder.</source>
        <translation>Enter a name for this folder.</translation>
    </message>
    <message id="Folder Name">
        <source>Folder Name</source>
        <extracomment>Placeholder of the empty name field of the new-folder prompt.</extracomment>
        <translation>Folder Name</translation>
    </message>
    <message id="Rename Item">
        <source>Rename Item</source>
        <translation>Rename Item</translation>
    </message>
    <message id="Enter a new name for this item.">
        <source>Enter a new name for this item.</source>
        <translation>Enter a new name for this item.</translation>
    </message>
    <!-- Alerts and delete warnings -->
    <message id="OK">
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message id="Delete from Vellora">
        <source>Delete from Vellora</source>
        <translation>Delete from Vellora</translation>
    </message>
    <message id="The %@ app library, and all its documents, will be permanently deleted from Vellora on all your devices. This action cannot be undone.">
        <source>The %@ app library, and all its documents, will be permanently deleted from Vellora on all your devices. This action cannot be undone.</source>
        <extracomment>%@ is the name of the app library.</extracomment>
        <translation>The %@ app library, and all its documents, will be permanently deleted from Vellora on all your devices. This action cannot be undone.</translation>
    </message>
    <message id="&quot;%@&quot; will be permanently deleted from Vellora on all your devices. This action cannot be undone.">
        <source>&quot;%@&quot; will be permanently deleted from Vellora on all your devices. This action cannot be undone.</source>
        <extracomment>%@ is the name of the document or folder.</extracomment>
        <translation>&quot;%@&quot; will be permanently deleted from Vellora on all your devices. This action cannot be undone.</translation>
    </message>
    <message id="%@ will be permanently deleted from Vellora on all your devices. This action cannot be undone.">
        <source>%@ will be permanently deleted from Vellora on all your devices. This action cannot be undone.</source>
        <extracomment>%@ is a number of items, such as “3 items”.</extracomment>
        <translation>%@ will be permanently deleted from Vellora on all your devices. This action cannot be undone.</translation>
    </message>
    <message id="The name “%1$@” with extension “.%2$@” is already taken.">
        <source>The name “%1$@” with extension “.%2$@” is already taken.</source>
        <extracomment>%1$@ is the name without its extension, %2$@ the extension.</extracomment>
        <translation>The name “%1$@” with extension “.%2$@” is already taken.</translation>
    </message>
    <message id="The name “%@” is already taken.">
        <source>The name “%@” is already taken.</source>
        <translation>The name “%@” is already taken.</translation>
    </message>
    <message id="The name “%@” can’t be used. Try using a name with fewer characters, or with no punctuation marks.">
        <source>The name “%@” can’t be used. Try using a name with fewer characters, or with no punctuation marks.</source>
        <translation>The name “%@” can’t be used. Try using a name with fewer characters, or with no punctuation marks.</translation>
    </message>
    <!-- Downloads -->
    <message id="This item is over %@.">
        <source>This item is over %@.</source>
        <extracomment>Alert title when a large item can’t be downloaded over cellular. %@ is the size limit, such as “100 MB”.</extracomment>
        <translation>This item is over %@.</translation>
    </message>
    <message id="“%@” will not download until you connect to Wi-Fi.">
        <source>“%@” will not download until you connect to Wi-Fi.</source>
        <extracomment>%@ is the name of the item.</extracomment>
        <translation>“%@” will not download until you connect to Wi-Fi.</translation>
    </message>
    <message id="Unable to download file. You are no longer connected to the Internet.">
        <source>Unable to download file. You are no longer connected to the Internet.</source>
        <translation>Unable to download the file. You are no longer connected to the Internet.</translation>
    </message>
    <message id="Download to View">
        <source>Download to View</source>
        <translation>Download to View</translation>
    </message>
    <message id="Download">
        <source>Download</source>
        <translation>Download</translation>
    </message>
    <message id="Cancel Download">
        <source>Cancel Download</source>
        <translation>Cancel Download</translation>
    </message>
    <message id="Loading…">
        <source>Loading…</source>
        <translation>Loading…</translation>
    </message>
    <message id="%1$@ of %2$@">
        <source>%1$@ of %2$@</source>
        <extracomment>Download progress: %1$@ is the size downloaded so far, %2$@ the whole size, such as “1.2 MB of 4 MB”.</extracomment>
        <translation>%1$@ of %2$@</translation>
    </message>
    <message id="Download from the Cloud">
        <source>Download from the Cloud</source>
        <extracomment>Spoken name of the cloud button on the download screen.</extracomment>
        <translation>Download from the Cloud</translation>
    </message>
    <message id="Download Progress">
        <source>Download Progress</source>
        <extracomment>Spoken name of the progress ring on the download screen; its value is spoken as a percentage.</extracomment>
        <translation>Download Progress</translation>
    </message>
    <!-- Details screen -->
    <message id="Open in “%@”">
        <source>Open in “%@”</source>
        <extracomment>Button that opens the document in another app. %@ is the app’s name.</extracomment>
        <translation>Open in “%@”</translation>
    </message>
    <message id="Kind">
        <source>Kind</source>
        <extracomment>Row name in an item’s details: the type of document.</extracomment>
        <translation>Kind</translation>
    </message>
    <message id="Size">
        <source>Size</source>
        <translation>Size</translation>
    </message>
    <message id="Where">
        <source>Where</source>
        <extracomment>Row name in an item’s details: the folders that hold the item.</extracomment>
        <translation>Where</translation>
    </message>
    <message id="Created">
        <source>Created</source>
        <translation>Created</translation>
    </message>
    <message id="Modified">
        <source>Modified</source>
        <translation>Modified</translation>
    </message>
    <message id="Tags">
        <source>Tags</source>
        <translation>Tags</translation>
    </message>
    <!-- Texts of file errors -->
    <message id="ERROR_FILE_NO_SUCH_FILE">
        <source>The file “%@” couldn’t be opened because there is no such file.</source>
        <extracomment>%@ is the file’s name.</extracomment>
        <translation>The file “%@” couldn’t be opened because there is no such file.</translation>
    </message>
    <message id="ERROR_FILE_INVALID_NAME">
        <source>The file “%@” couldn’t be saved because the file name is invalid.</source>
        <extracomment>%@ is the file’s name.</extracomment>
        <translation>The file “%@” couldn’t be saved because the file name is invalid.</translation>
    </message>
    <message id="ERROR_FILE_EXISTS">
        <source>The file “%@” couldn’t be saved because a file with the same name already exists.</source>
        <extracomment>%@ is the file’s name.</extracomment>
        <translation>The file “%@” couldn’t be saved because a file with the same name already exists.</translation>
    </message>
    <message id="ERROR_FILE_NO_SUCH_FILE_UNNAMED">
        <source>The file couldn’t be opened because there is no such file.</source>
        <translation>The file couldn’t be opened because there is no such file.</translation>
    </message>
    <message id="ERROR_FILE_INVALID_NAME_UNNAMED">
        <source>The file couldn’t be saved because the file name is invalid.</source>
        <translation>The file couldn’t be saved because the file name is invalid.</translation>
    </message>
    <message id="ERROR_FILE_EXISTS_UNNAMED">
        <source>The file couldn’t be saved because a file with the same name already exists.</source>
        <translation>The file couldn’t be saved because a file with the same name already exists.</translation>
    </message>
    <message id="ERROR_USER_CANCELLED">
        <source>The operation was cancelled.</source>
        <translation>The operation was cancelled.</translation>
    </message>
    <message id="ERROR_FEATURE_UNSUPPORTED">
        <source>The operation couldn’t be completed because it isn’t supported.</source>
        <translation>The operation couldn’t be completed because it isn’t supported.</translation>
    </message>
    <message id="ERROR_CLOUD_SERVER_UNAVAILABLE">
        <source>The cloud server isn’t available right now. Try again later.</source>
        <translation>The cloud server isn’t available right now. Try again later.</translation>
    </message>
    <message id="ERROR_GENERIC">
        <source>The operation couldn’t be completed. (%1$@ error %2$d.)</source>
        <extracomment>%1$@ is the error domain, %2$d the error code.</extracomment>
        <translation>The operation couldn’t be completed. (%1$@ error %2$d.)</translation>
    </message>
    <message id="Vellora Drive">
        <source>Vellora Drive</source>
        <extracomment>The drive's own name: the title of the root list and of the unavailable screen.</extracomment>
        <translation>Vellora Drive</translation>
    </message>
    <message id="Vellora Drive Is Unavailable">
        <source>Vellora Drive Is Unavailable</source>
        <translation>Vellora Drive Is Unavailable</translation>
    </message>
    <message id="Sign in to your Nimbra account and turn on Vellora Drive to see your documents here.">
        <source>Sign in to your Nimbra account and turn on Vellora Drive to see your documents here.</source>
        <translation>Sign in to your Nimbra account and turn on Vellora Drive to see your documents here.</translation>
    </message>
    <message id="Actions…">
        <source>Actions…</source>
        <extracomment>A folder list's per-item menu entry that opens the item's actions.</extracomment>
        <translation>Actions…</translation>
    </message>
    <message id="Details">
        <source>Details</source>
        <extracomment>A folder list's per-item menu entry that opens the details screen.</extracomment>
        <translation>Details</translation>
    </message>
    <!-- Undo bar after a move or a rename -->
    <message id="Undo">
        <source>Undo</source>
        <extracomment>Button of the bar shown after a move or a rename; moves the items back.</extracomment>
        <translation>Undo</translation>
    </message>
    <message id=".DICT.MOVED_ITEMS_TO.%d" numerus="yes">
        <source>Moved %d items to %@</source>
        <extracomment>Said after a move. %d is the number of items, %@ the folder's name.</extracomment>
        <translation>
            <numerusform>Moved %d item to %@</numerusform>
            <numerusform>Moved %d items to %@</numerusform>
        </translation>
    </message>
    <message id="Renamed “%1$@” to “%2$@”">
        <source>Renamed “%1$@” to “%2$@”</source>
        <extracomment>Said after a rename: the old name and the new one.</extracomment>
        <translation>Renamed “%1$@” to “%2$@”</translation>
    </message>
    <message id=".DICT.MOVED_BACK_ITEMS.%d" numerus="yes">
        <source>Moved %d items back</source>
        <extracomment>Said after Undo of a move. %d is the number of items.</extracomment>
        <translation>
            <numerusform>Moved %d item back</numerusform>
            <numerusform>Moved %d items back</numerusform>
        </translation>
    </message>
    <message id="Renamed back to “%@”">
        <source>Renamed back to “%@”</source>
        <extracomment>Said after Undo of a rename. %@ is the name the item has again.</extracomment>
        <translation>Renamed back to “%@”</translation>
    </message>
    <message id=".DICT.UNDO_LEFT_ITEMS.%d" numerus="yes">
        <source>%d items changed since and were left where they are</source>
        <extracomment>Said after Undo when items were changed (on this or another device) after they were moved. %d is their number.</extracomment>
        <translation>
            <numerusform>%d item changed since and was left where it is</numerusform>
            <numerusform>%d items changed since and were left where they are</numerusform>
        </translation>
    </message>
    <message id="Open With">
        <source>Open With</source>
        <extracomment>Caption of the share sheet's row of applications that can open the document.</extracomment>
        <translation>Open With</translation>
    </message>
    <message id="Copy">
        <source>Copy</source>
        <extracomment>Share sheet: puts the document on the clipboard.</extracomment>
        <translation>Copy</translation>
    </message>
    <message id="Show in Folder">
        <source>Show in Folder</source>
        <extracomment>Share sheet: shows the document in the file manager.</extracomment>
        <translation>Show in Folder</translation>
    </message>
    <message id="Send by Email">
        <source>Send by Email</source>
        <extracomment>Share sheet: writes an email with the document attached.</extracomment>
        <translation>Send by Email</translation>
    </message>
    <message id="Can’t Open “%@”">
        <source>Can’t Open “%@”</source>
        <extracomment>Title of the alert when an application could not be started for a document. %@ is the document's name.</extracomment>
        <translation>Can’t Open “%@”</translation>
    </message>
    <message id="%1$@ couldn’t be started: %2$@">
        <source>%1$@ couldn’t be started: %2$@</source>
        <extracomment>%1$@ is the application's name, %2$@ the reason.</extracomment>
        <translation>%1$@ couldn’t be started: %2$@</translation>
    </message>
    <message id="Can’t Send “%@”">
        <source>Can’t Send “%@”</source>
        <extracomment>Title of the alert when no email could be written. %@ is the document's name.</extracomment>
        <translation>Can’t Send “%@”</translation>
    </message>
    <message id="“%@” is no longer installed.">
        <source>“%@” is no longer installed.</source>
        <extracomment>An application chosen to open a document was removed meanwhile. %@ is its name.</extracomment>
        <translation>“%@” is no longer installed.</translation>
    </message>
    <!-- Names a screen reader says for icon-only bar buttons -->
    <message id="Add">
        <source>Add</source>
        <extracomment>Spoken name of an icon button that adds an item.</extracomment>
        <translation>Add</translation>
    </message>
    <message id="Compose">
        <source>Compose</source>
        <extracomment>Spoken name of an icon button that writes something new.</extracomment>
        <translation>Compose</translation>
    </message>
    <message id="Reply">
        <source>Reply</source>
        <extracomment>Spoken name of an icon button that replies.</extracomment>
        <translation>Reply</translation>
    </message>
    <message id="Share">
        <source>Share</source>
        <extracomment>Spoken name of an icon button that shares the item shown.</extracomment>
        <translation>Share</translation>
    </message>
    <message id="Bookmarks">
        <source>Bookmarks</source>
        <extracomment>Spoken name of an icon button that shows bookmarks.</extracomment>
        <translation>Bookmarks</translation>
    </message>
    <message id="Refresh">
        <source>Refresh</source>
        <extracomment>Spoken name of an icon button that reads the content again.</extracomment>
        <translation>Refresh</translation>
    </message>
    <message id="Stop">
        <source>Stop</source>
        <extracomment>Spoken name of an icon button that stops what is under way.</extracomment>
        <translation>Stop</translation>
    </message>
    <message id="Camera">
        <source>Camera</source>
        <extracomment>Spoken name of an icon button that takes a picture.</extracomment>
        <translation>Camera</translation>
    </message>
    <!-- Quick preview -->
    <message id="“%@” Can’t Be Previewed">
        <source>“%@” Can’t Be Previewed</source>
        <extracomment>Heading of the quick preview when a file can’t be shown. %@ is the file’s name.</extracomment>
        <translation>“%@” Can’t Be Previewed</translation>
    </message>
    <message id="Warning">
        <source>Warning</source>
        <extracomment>Spoken name of the warning icon above that heading.</extracomment>
        <translation>Warning</translation>
    </message>
    <message id="The file can’t be read.">
        <source>The file can’t be read.</source>
        <extracomment>Reason under that heading when nothing more precise is known.</extracomment>
        <translation>The file can’t be read.</translation>
    </message>
    <message id="The file can’t be found.">
        <source>The file can’t be found.</source>
        <extracomment>Reason under that heading: the file is gone.</extracomment>
        <translation>The file can’t be found.</translation>
    </message>
    <message id="No Document">
        <source>No Document</source>
        <extracomment>Shown in the quick preview when there is no file to show.</extracomment>
        <translation>No Document</translation>
    </message>
    <message id="Previous">
        <source>Previous</source>
        <extracomment>Spoken name of the quick preview’s button that shows the previous file.</extracomment>
        <translation>Previous</translation>
    </message>
    <message id="Next">
        <source>Next</source>
        <extracomment>Spoken name of the quick preview’s button that shows the next file.</extracomment>
        <translation>Next</translation>
    </message>
    <message id="%d of %d">
        <source>%d of %d</source>
        <extracomment>Position of the shown file in the quick preview’s list: “3 of 12”.</extracomment>
        <translation>%d of %d</translation>
    </message>
    <message id="Folder">
        <source>Folder</source>
        <extracomment>Kind of item on the quick preview’s page for a folder.</extracomment>
        <translation>Folder</translation>
    </message>
    <message id="Document">
        <source>Document</source>
        <extracomment>Kind of item on the quick preview’s page for a file of no known type.</extracomment>
        <translation>Document</translation>
    </message>
    <message id="%@, %@">
        <source>%@, %@</source>
        <extracomment>Spoken description of that page: the kind, then the size (“PNG image, 2.1 MB”).</extracomment>
        <translation>%@, %@</translation>
    </message>
    <message id="1 byte">
        <source>1 byte</source>
        <extracomment>Size of a file of one byte.</extracomment>
        <translation>1 byte</translation>
    </message>
    <message id="%lld bytes">
        <source>%lld bytes</source>
        <extracomment>Size of a file under a kilobyte. %lld is the number of bytes.</extracomment>
        <translation>%lld bytes</translation>
    </message>
    <message id="Picture, %d × %d pixels">
        <source>Picture, %d × %d pixels</source>
        <extracomment>Spoken description of a picture in the quick preview: its width and height.</extracomment>
        <translation>Picture, %d × %d pixels</translation>
    </message>
    <message id="The picture can’t be read (%@).">
        <source>The picture can’t be read (%@).</source>
        <extracomment>Reason a picture can’t be previewed. %@ is the reader’s own explanation.</extracomment>
        <translation>The picture can’t be read (%@).</translation>
    </message>
    <message id="unknown format">
        <source>unknown format</source>
        <extracomment>Put in the sentence above when the reader gives no explanation.</extracomment>
        <translation>unknown format</translation>
    </message>
    <message id="It isn’t a valid PDF document.">
        <source>It isn’t a valid PDF document.</source>
        <extracomment>Reason a PDF can’t be previewed: it is damaged or not a PDF.</extracomment>
        <translation>It isn’t a valid PDF document.</translation>
    </message>
    <message id="The document is protected by a password.">
        <source>The document is protected by a password.</source>
        <extracomment>Reason a PDF can’t be previewed.</extracomment>
        <translation>The document is protected by a password.</translation>
    </message>
    <message id="The document’s protection isn’t supported.">
        <source>The document’s protection isn’t supported.</source>
        <extracomment>Reason a PDF can’t be previewed: it is encrypted in a way that can’t be opened.</extracomment>
        <translation>The document’s protection isn’t supported.</translation>
    </message>
    <message id="The document has no pages.">
        <source>The document has no pages.</source>
        <extracomment>Reason a PDF can’t be previewed.</extracomment>
        <translation>The document has no pages.</translation>
    </message>
    <message id="PDF document, 1 page">
        <source>PDF document, 1 page</source>
        <extracomment>Spoken description of a one-page PDF in the quick preview.</extracomment>
        <translation>PDF document, 1 page</translation>
    </message>
    <message id="PDF document, %d pages">
        <source>PDF document, %d pages</source>
        <extracomment>Spoken description of a PDF in the quick preview. %d is the number of pages (2 or more).</extracomment>
        <translation>PDF document, %d pages</translation>
    </message>
    <message id="Page %d of %d">
        <source>Page %d of %d</source>
        <extracomment>Label under a PDF in the quick preview: the page at the top and the number of pages.</extracomment>
        <translation>Page %d of %d</translation>
    </message>
    <message id="It isn’t a text file.">
        <source>It isn’t a text file.</source>
        <extracomment>Reason a text file can’t be previewed: it holds binary data.</extracomment>
        <translation>It isn’t a text file.</translation>
    </message>
    <message id="Showing the first %@ of the file.">
        <source>Showing the first %@ of the file.</source>
        <extracomment>Note above a long text file in the quick preview. %@ is a size (“8 MB”).</extracomment>
        <translation>Showing the first %@ of the file.</translation>
    </message>
    <message id="Play">
        <source>Play</source>
        <extracomment>Spoken name of the quick preview’s button that plays audio or video.</extracomment>
        <translation>Play</translation>
    </message>
    <message id="Pause">
        <source>Pause</source>
        <extracomment>Spoken name of that button while the audio or video plays.</extracomment>
        <translation>Pause</translation>
    </message>
    <message id="Position">
        <source>Position</source>
        <extracomment>Spoken name of the slider that shows and sets the playing position.</extracomment>
        <translation>Position</translation>
    </message>
    <message id="%@ of %@">
        <source>%@ of %@</source>
        <extracomment>Spoken value of that slider: the position and the duration (“1:05 of 3:20”).</extracomment>
        <translation>%@ of %@</translation>
    </message>
    <message id="The file can’t be played.">
        <source>The file can’t be played.</source>
        <extracomment>Reason audio or video can’t be previewed.</extracomment>
        <translation>The file can’t be played.</translation>
    </message>
</context>
</TS>

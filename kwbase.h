// Kw_Base: the whole public interface. A program that links kwbase includes this header.
#pragma once

#include "base/Assert.h"
#include "base/CodePages.h"
#include "base/FileOps.h"
#include "base/Format.h"
#include "base/IndexSort.h"
#include "base/KwFile.h"
#include "base/KwFolders.h"
#include "base/KwTime.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "base/Types.h"

#include "platform/KwProgress.h"
#include "platform/Platform.h"
#include "platform/ConsolePlatform.h"
#include "platform/ScriptedPlatform.h"
#include "platform/ListControl.h"

#include "app/StringTable.h"
#include "app/QueryBox.h"
#include "app/KwQueryDlg.h"
#include "app/KwWinApp.h"

#include "data/KwData.h"
#include "data/KwCfgSection.h"
#include "data/KwConfigData.h"
#include "data/KwMapData.h"
#include "data/KwPersistence.h"

#include "terms/KwTerm.h"
#include "terms/KwMathTerm.h"
#include "terms/KwLogiTerm.h"
#include "terms/KwLogiTermEx.h"

#include "editor/KwUndoMemory.h"
#include "editor/KwEditUndo.h"
#include "editor/KwEditArea.h"
#include "editor/KwEditBase.h"
#include "editor/KwEditView.h"
#include "editor/KwRecordEvent.h"
#include "editor/KwFindData.h"

#include "lists/KwListCore.h"
#include "lists/KwListCtrl.h"
#include "lists/KwListView.h"
#include "lists/KwUniFilters.h"

// CWebSite: which address is answered by what, who may ask, and the headers that keep other sites out.
#pragma once

#include "host/web/history_service.h"
#include "host/web/logger_watch.h"
#include "host/web/web_page.h"
#include "host/web/web_request.h"
#include "host/web/web_sessions.h"
#include "host/web/web_users.h"

namespace vastra {

class CWebSite : public CWebHandler {
 public:
  // Called with a line about what the owner of the server should hear of, by any thread.
  using CTell = std::function<void(const std::string&)>;

  // users: who has to log in; null: nobody. All must exist as long as the site.
  CWebSite(CLoggerWatch& watch, CHistoryService& history, const CPackedPage& page, CWebUsers* users,
           CTell tell);

  bool IsSlow(const CWebRequest& request) const override;
  CWebAnswer Answer(const CWebRequest& request, const CWebStop& isStopped) override;

 private:
  struct CAsked;  // a request with its user
  using CRoute = CWebAnswer (CWebSite::*)(const CAsked&);
  struct CAddress {
    CRoute route = nullptr;
    std::string name = {}, what = {};     // of the logger, and what is asked about it
    bool isSlow = false, isOpen = false;  // isOpen: to everybody
  };
  CAddress Find(const CWebRequest& request) const;
  struct CFoundPage {
    const CPageFile* file;  // null: there is none
    bool isOfVersion;       // the address has the version: what it leads to never changes
  };
  CFoundPage FindPage(std::string_view path) const;
  CAddress FindOfLogger(std::string_view rest) const;

  CWebAnswer Choose(const CWebRequest& request, const CWebStop& isStopped);
  std::string WhatIsForeign(const CWebRequest& request) const;
  struct CCheck {
    std::string hash = {};  // of the user, who is the right one; empty: is not
    bool hasToWait = false;
  };
  std::optional<std::string> UserOf(const CWebRequest& request, bool& hasToWait);
  std::function<bool()> MayStillLook(const CAsked& asked);
  CCheck Check(const CWebRequest& request, const std::string& name, const std::string& password);

  CWebAnswer Page(const CAsked& asked);
  CWebAnswer LogIn(const CAsked& asked);
  CWebAnswer LogOut(const CAsked& asked);
  CWebAnswer About(const CAsked& asked);
  CWebAnswer Loggers(const CAsked& asked);
  CWebAnswer Logger(const CAsked& asked);
  CWebAnswer Variables(const CAsked& asked);
  CWebAnswer Sample(const CAsked& asked);
  CWebAnswer Messages(const CAsked& asked);
  CWebAnswer Metrics(const CAsked& asked);
  CWebAnswer Stream(const CAsked& asked);
  CWebAnswer History(const CAsked& asked);

  CLoggerWatch& m_watch;
  CHistoryService& m_history;
  const CPackedPage m_page;
  CWebUsers* const m_users;
  const CTell m_tell;
  std::once_flag m_isClearTold;
  CWebSessions m_sessions;
};

}  // namespace vastra

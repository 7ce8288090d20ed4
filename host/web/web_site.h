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
  // pages: the files of the page. users: who has to log in; null: nobody. All must exist as long as the site.
  CWebSite(CLoggerWatch& watch, CHistoryService& history, std::span<const CPageFile> pages, CWebUsers* users);

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
  const CPageFile* FindPage(std::string_view path) const;
  static CAddress FindOfLogger(std::string_view rest);

  CWebAnswer Choose(const CWebRequest& request, const CWebStop& isStopped);
  std::string WhatIsForeign(const CWebRequest& request) const;
  std::optional<std::string> UserOf(const CWebRequest& request);
  enum class ECheck { good, failed, wait };
  std::function<bool()> MayStillLook(const CAsked& asked);
  ECheck Check(const CWebRequest& request, const std::string& name, const std::string& password);

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
  const std::span<const CPageFile> m_pages;
  CWebUsers* const m_users;
  CWebSessions m_sessions;
};

}  // namespace vastra

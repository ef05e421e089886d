#include "App.h"

#include "Window1View.h"

App::App(Clock& clock, HidBackend& backend, PlatformServices& platform)
    : m_hid(backend), m_window1(std::make_unique<Window1>(m_globals, clock, platform, m_hid))
{
}

App::~App()
{
    m_view.reset();
    m_window1.reset();
    m_hid.Close();
}

void App::Event_Open()
{
    m_view = std::make_unique<Window1View>(*m_window1);
    m_view->show();
    m_window1->Event_Open();
}

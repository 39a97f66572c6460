#include "imaging/Save/SaveRows.h"

#include "imaging/ColorRows.h"

namespace Norvane::Imaging {

template <class T>
SaveRows<T>::SaveRows(const RowReader& reader, std::size_t width, Order order)
    : m_reader(reader), m_width(width), m_swap(order == Order::Rgb && reader.IsColor()),
      m_line(m_scratch.Take<T>(width * reader.SamplesPerPixel())) {}

template <class T>
const T* SaveRows<T>::Row(std::size_t y) {
    const T* direct = m_reader.template Direct<T>(y);
    if (direct && !m_swap) {
        return direct;
    }
    if (direct) {
        SwapRedBlue(direct, m_width, m_line);
    } else {
        m_reader.Read(y, m_line);
        if (m_swap) {
            SwapRedBlue(m_line, m_width, m_line);
        }
    }
    return m_line;
}

template class SaveRows<std::uint8_t>;
template class SaveRows<std::uint16_t>;

} // namespace Norvane::Imaging
